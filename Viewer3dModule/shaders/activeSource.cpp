#include <Viewer3dModule/shaders/activeSource.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

/// Takes a source line by line, each as a preprocessor has it: without comments, and with what a backslash at
/// its end continues.
class Lines
{
public:
    explicit Lines(const QByteArray& source)
        : m_at(source.constData())
        , m_end(m_at + source.size())
    {
    }
    bool isAtEnd() const { return m_at == m_end; }

    /// Appends the next line without the line feed at its end. Returns how many line feeds it took and did
    /// not append.
    int take(QByteArray& out)
    {
        int feeds = 0;
        while (m_at < m_end) {
            const char* const lineEnd = find('\n', m_at, m_end);
            const char* const slash = find('/', m_at, lineEnd);
            const char mark = slash + 1 < lineEnd ? slash[1] : '\0';
            append(out, mark == '\0' ? lineEnd : slash);
            if (mark == '/') {
                feeds += skipLine();
                break;
            }
            if (mark == '*') {
                feeds += takeComment(out);
            } else if (mark != '\0') {
                out += *m_at++;
            } else if (m_at == m_end) {
                break;
            } else if (out.endsWith('\\')) {
                out += *m_at++;
            } else {
                ++m_at;
                ++feeds;
                break;
            }
        }
        return feeds;
    }

private:
    static const char* find(char c, const char* begin, const char* end)
    {
        const void* found = std::memchr(begin, c, static_cast<std::size_t>(end - begin));
        return found ? static_cast<const char*>(found) : end;
    }
    void append(QByteArray& out, const char* end)
    {
        out.append(m_at, static_cast<int>(end - m_at));
        m_at = end;
    }
    // The comment to the end of the line, and that.
    int skipLine()
    {
        int feeds = 0;
        bool isContinued = true;
        while (isContinued && m_at < m_end) {
            m_at = find('\n', m_at, m_end);
            isContinued = m_at[-1] == '\\';
            if (m_at == m_end) break;
            ++m_at;
            ++feeds;
        }
        return feeds;
    }
    // A blank for the comment; one that does not end is left to the compiler.
    int takeComment(QByteArray& out)
    {
        const std::string_view rest(m_at, static_cast<std::size_t>(m_end - m_at));
        const std::size_t end = rest.find("*/", 2);
        if (end == std::string_view::npos) {
            append(out, m_end);
            return 0;
        }
        const char* const after = m_at + end + 2;
        const auto feeds = std::count(m_at, after, '\n');
        m_at = after;
        out += ' ';
        return static_cast<int>(feeds);
    }

    const char* m_at;
    const char* m_end;
};

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r' && c != '\n');
}

bool isOfWord(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

std::string_view withoutBlanks(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    return text;
}

/// The line as it is without what continues it; a preprocessor finds words across that.
std::string joined(std::string_view line)
{
    std::string all;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line.substr(at, 2) == "\\\n")
            ++at;
        else
            all += line[at];
    }
    return all;
}

std::string_view takeWord(std::string_view& text)
{
    text = withoutBlanks(text);
    std::size_t length = 0;
    while (length < text.size() && isOfWord(text[length]))
        ++length;
    const std::string_view word = text.substr(0, length);
    text.remove_prefix(length);
    return word;
}

/// Follows the conditions of a source from line to line.
class Conditions
{
public:
    /// Takes a directive, from after its "#" on. Returns whether the compiler has to see it.
    bool read(std::string_view directive)
    {
        const bool wasActive = isActive();
        const std::string_view word = takeWord(directive);
        const std::string_view name = takeWord(directive);
        if (word == "ifdef")
            m_branches.push_back(branchOf(stateOf(name), true));
        else if (word == "ifndef")
            m_branches.push_back(branchOf(stateOf(name), false));
        else if (word == "if")
            m_branches.push_back(Unknown);
        else if (word == "else" || word == "elif" || word == "endif")
            return m_branches.empty() || leaveBranch(word);
        else if (wasActive && (word == "define" || word == "undef"))
            setState(name, word == "define");
        return wasActive;
    }
    bool isActive() const { return m_left == 0; }

private:
    /// Passed: an earlier branch of the same condition was taken.
    enum Branch { Taken, NotYet, Passed, Unknown };
    enum class State { Defined, Undefined, Unknown };

    static bool isLeft(Branch branch) { return branch == NotYet || branch == Passed; }

    Branch branchOf(State state, bool wanted)
    {
        if (state == State::Unknown) return Unknown;
        if ((state == State::Defined) == wanted) return Taken;
        ++m_left;
        return NotYet;
    }

    // Whether the compiler has to see the line: the condition itself is not in a branch that is left out.
    bool leaveBranch(std::string_view word)
    {
        Branch& last = m_branches.back();
        m_left -= isLeft(last) ? 1 : 0;
        const bool isSeen = isActive();
        if (word == "endif") {
            m_branches.pop_back();
            return isSeen;
        }
        if (last == Taken || last == Passed)
            last = Passed;
        else if (last == NotYet && word == "else")
            last = Taken;
        else
            last = Unknown;
        m_left += isLeft(last) ? 1 : 0;
        return isSeen;
    }

    State stateOf(std::string_view name) const
    {
        if (name.substr(0, 3) == "GL_" || name.substr(0, 2) == "__") return State::Unknown;
        for (const auto& [known, state] : m_names)
            if (known == name) return state;
        return State::Undefined;
    }

    void setState(std::string_view name, bool isDefined)
    {
        const bool isSure = std::find(m_branches.begin(), m_branches.end(), Unknown) == m_branches.end();
        const State state = !isSure ? State::Unknown : isDefined ? State::Defined : State::Undefined;
        for (auto& entry : m_names) {
            if (entry.first != name) continue;
            entry.second = state;
            return;
        }
        m_names.emplace_back(name, state);
    }

    std::vector<std::pair<std::string, State>> m_names; // few enough to look through
    std::vector<Branch> m_branches;
    int m_left = 0; ///< branches that are not taken
};

} // namespace

QByteArray activeSource(const QByteArray& source)
{
    QByteArray active;
    active.reserve(source.size());
    Lines lines(source);
    Conditions conditions;
    while (!lines.isAtEnd()) {
        const int begin = active.size();
        const int feeds = lines.take(active);
        std::string_view line(active.constData() + begin, static_cast<std::size_t>(active.size() - begin));
        std::string joinedLine;
        if (line.find('\n') != std::string_view::npos) line = joinedLine = joined(line);
        line = withoutBlanks(line);
        const bool isDirective = !line.empty() && line.front() == '#';
        const bool isSeen = isDirective ? conditions.read(line.substr(1)) : conditions.isActive();
        if (!isSeen || line.empty()) {
            const auto kept = std::count(active.constBegin() + begin, active.constEnd(), '\n');
            active.truncate(begin);
            active.append(static_cast<int>(kept), '\n');
        }
        active.append(feeds, '\n');
    }
    return active;
}
