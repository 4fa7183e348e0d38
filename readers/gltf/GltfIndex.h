#pragma once

#include <framework/ksp/StagedProgress.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/MemoryBudget.h>

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace readers {

/// The text of a glTF document and where the members of its lists stand in it. A member is made into an
/// object each time that it is asked for, so that a document takes little more memory than its text.
class GltfIndex : private JsonHandler
{
public:
    GltfIndex() = default;
    /// Reads the text, which must outlive the index. Throws ksp::CommonError when it is no valid JSON, no
    /// object, or asks for far more memory or time than its size explains. fileSize: that of all the file,
    /// bytes.
    void read(const QByteArray& json, std::size_t fileSize, ksp::StagedProgress progress);

    /// The number of members that one of the root's lists has.
    int getCountOf(const char* list) const;
    /// One of them.
    QJsonObject getMember(const char* list, int index);
    /// What "asset", "extensionsRequired" or "scene" is; undefined when it is not there.
    QJsonValue getValue(const char* name) const;

private:
    /// Where an object or list stands in the text, with its brackets.
    struct Place
    {
        int begin;
        int end;
    };
    struct List
    {
        std::vector<Place> members;
        int lastIndex = -1; ///< of the member that was asked for last, which is often the next one too
        QJsonObject last;
    };

    void onNull() override { addScalar({}); }
    void onBoolean(bool) override { addScalar({}); }
    void onInteger(std::int64_t value) override { addScalar(static_cast<double>(value)); }
    void onNumber(double value) override { addScalar(value); }
    void onString(std::string& text) override;
    void onObject() override;
    void onKey(std::string& name) override;
    void onObjectEnd() override { end(); }
    void onArray() override;
    void onArrayEnd() override { end(); }

    void addScalar(const QJsonValue& value);
    void begin();
    void end();
    void charge(std::size_t bytes);
    [[noreturn]] void failMember() const;
    QByteArray at(const Place& place) const;

    QByteArray m_json;
    std::size_t m_fileSize = 0;
    std::function<int()> m_offset; // while the text is read
    std::map<std::string, List, std::less<>> m_lists;
    std::map<std::string, Place, std::less<>> m_places; // of other values of the root
    QJsonValue m_scene = QJsonValue::Undefined;

    bool m_isObject = false;
    int m_depth = 0;        // of objects and lists under way
    std::string m_name;     // of the root's member under way
    List* m_list = nullptr; // when it is a list that is kept
    bool m_isKept = false;  // when it is a value that is kept
    Place m_place = {};     // of the object or list that is kept and under way
    MemoryBudget m_budget{0};
};

} // namespace readers
