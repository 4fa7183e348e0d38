#pragma once

#include <framework/ksp/StagedProgress.h>
#include <readers/common/JsonHandler.h>

#include <QtCore/QByteArray>

#include <functional>
#include <map>
#include <string>

namespace readers {

/// Where the members of a JSON object stand in its text, and those of its members that are objects, so that
/// they can be read in the order in which they are needed.
class JsonPlaces : private JsonHandler
{
public:
    /// Throws ksp::CommonError when the text, which must outlive this, is no JSON object.
    JsonPlaces(const QByteArray& text, ksp::StagedProgress progress);

    /// The text of a list or object; names are "member" or "member/member". Empty when it is not there. Of
    /// members given twice the last holds.
    QByteArray textOf(const std::string& name) const;
    /// A member that is text. Empty when it is not there.
    std::string stringOf(const std::string& name) const;
    bool has(const std::string& name) const { return m_members.count(name) != 0; }

private:
    struct Member
    {
        int begin = 0;
        int end = 0;
        std::string text;
    };
    void onNull() override { addScalar({}); }
    void onBoolean(bool) override { addScalar({}); }
    void onInteger(std::int64_t) override { addScalar({}); }
    void onNumber(double) override { addScalar({}); }
    void onString(std::string& text) override { addScalar(std::move(text)); }
    void onObject() override { begin(); }
    void onKey(std::string& name) override;
    void onObjectEnd() override { end(); }
    void onArray() override;
    void onArrayEnd() override { end(); }
    void addScalar(std::string text);
    void begin();
    void end();

    QByteArray m_text;
    std::function<int()> m_offset; // while the text is read
    std::map<std::string, Member> m_members;
    int m_depth = 0;
    std::string m_names[2]; // of the members under way; empty: none that is kept
    int m_begins[2] = {};
};

} // namespace readers
