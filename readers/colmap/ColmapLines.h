#pragma once

#include <readers/common/InputBuffer.h>

#include <QtCore/QString>

namespace readers {

/// The lines of a COLMAP text file, word by word. What is wrong with one is thrown as ksp::CommonError, "line
/// 7: reason".
class ColmapLines
{
public:
    ColmapLines(QIODevice& device, ksp::StagedProgress progress);

    /// Goes to the next line that is neither empty nor a comment; false at the end of the file.
    bool next();
    /// Goes to the line below, whatever it holds; false at the end of the file.
    bool nextBelow();

    /// Whether there are no more words in the line.
    bool isAtEnd();
    /// The next word; what names it in messages.
    std::string_view takeWord(const char* what);
    /// A number whose size is at most 1e15.
    double takeNumber(const char* what);
    /// An integer from least on up to most.
    std::int64_t takeInteger(const char* what, std::int64_t least, std::int64_t most);
    /// An identifier of a camera, a picture or a point.
    std::int64_t takeIdentifier(const char* what) { return takeInteger(what, 0, largestIdentifier); }
    /// What is left of the line, without blanks at its ends.
    std::string_view takeRest();
    /// Refuses words that are left.
    void requireEnd();

    [[noreturn]] void fail(const QString& reason) const;

private:
    static constexpr std::int64_t largestIdentifier = std::int64_t(1) << 62;

    InputBuffer m_buffer;
    std::string_view m_rest;
};

} // namespace readers
