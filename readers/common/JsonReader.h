#pragma once

#include <framework/ksp/StagedProgress.h>
#include <readers/common/JsonHandler.h>

#include <QtCore/QByteArray>

namespace readers {

/// Reads JSON piece by piece, so that a handler keeps what it needs and no tree of everything is ever made:
/// besides the text itself one string or number is in memory. The text is an object or a list, in UTF-8, with
/// a byte order mark or without.
class JsonReader
{
public:
    /// Lists and objects that may stand within each other.
    static constexpr int deepest = 1024;

    /// progress: of the bytes read.
    JsonReader(QByteArray text, ksp::StagedProgress progress);

    /// Reads the whole text. Throws ksp::CommonError with the place when it is no valid JSON or nests too
    /// deeply, ksp::Canceled, and what the handler throws.
    void read(JsonHandler& handler);

    /// For a handler while it is told that an object or list begins or ends: the bytes of the text up to and
    /// with the bracket.
    int getOffset() const { return static_cast<int>(m_next - m_text.constData()); }

private:
    struct Cursor;
    class Events;

    void checkBegin() const;
    void goDown();
    void look();
    [[noreturn]] void fail(std::ptrdiff_t offset, const QString& reason) const;

    QByteArray m_text;
    const char* m_next;             // of the characters to come
    const char* m_told = nullptr;   // behind those that the handler knows of, blanks aside
    const char* m_lookAt = nullptr; // where cancel and progress have their turn
    int m_depth = 0;                // of lists and objects under way
    ksp::StagedProgress m_progress;
};

} // namespace readers
