#include <Viewer3dModule/shaders/StorageLimits.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>

namespace {

// A blank in place of each comment.
QString withoutComments(QString source)
{
    const QLatin1Char toBeContinued('\\');
    for (int at = source.indexOf(toBeContinued); at >= 0; at = source.indexOf(toBeContinued, at + 1))
        if (at + 1 < source.size() && source[at + 1] == QLatin1Char('\n'))
            source[at] = source[at + 1] = QLatin1Char(' ');
    QString rest;
    rest.reserve(source.size());
    for (int at = 0; at < source.size();) {
        int begin = source.indexOf(QLatin1Char('/'), at);
        if (begin < 0) begin = source.size();
        rest += source.midRef(at, begin - at);
        const QStringRef mark = source.midRef(begin, 2);
        int end = -1;
        if (mark == QLatin1String("//")) {
            end = source.indexOf(QLatin1Char('\n'), begin);
            if (end < 0) end = source.size();
        } else if (mark == QLatin1String("/*")) {
            end = source.indexOf(QLatin1String("*/"), begin + 2);
            if (end >= 0) end += 2;
        }
        if (end < 0)
            rest += mark.left(1);
        else
            rest += QLatin1Char(' ');
        at = end < 0 ? begin + 1 : end;
    }
    return rest;
}

// The word that begins at or after the place, blanks aside; leads the place to its end.
QStringRef takeWord(const QStringRef& line, int& at)
{
    const auto isOfWord = [](QChar c) {
        return c.unicode() < 128 && (c.isLetterOrNumber() || c == QLatin1Char('_'));
    };
    while (at < line.size() && line[at].isSpace())
        ++at;
    const int begin = at;
    while (at < line.size() && isOfWord(line[at]))
        ++at;
    return line.mid(begin, at - begin);
}

// Follows the conditions of a source from line to line.
class Conditions
{
public:
    /// Takes a directive: "ifdef" and "NAME" of "#ifdef NAME".
    void read(const QString& word, const QString& name)
    {
        if (word == QLatin1String("define") && isActive())
            m_names.insert(name);
        else if (word == QLatin1String("undef") && isActive())
            m_names.remove(name);
        else if (word == QLatin1String("ifdef"))
            m_branches.append(m_names.contains(name) ? Taken : Left);
        else if (word == QLatin1String("ifndef"))
            m_branches.append(m_names.contains(name) ? Left : Taken);
        else if (word == QLatin1String("if"))
            m_branches.append(Unknown);
        else if (!m_branches.isEmpty())
            readEndOfBranch(word);
    }
    bool isActive() const { return !m_branches.contains(Left); }

private:
    enum Branch { Taken, Left, Unknown };

    void readEndOfBranch(const QString& word)
    {
        if (word == QLatin1String("endif"))
            m_branches.removeLast();
        else if (m_branches.last() == Taken && word.startsWith(QLatin1String("el")))
            m_branches.last() = Left;
        else if (m_branches.last() == Left && word == QLatin1String("else"))
            m_branches.last() = Taken;
        else if (word == QLatin1String("elif"))
            m_branches.last() = Unknown;
    }

    QSet<QString> m_names;
    QVector<Branch> m_branches;
};

// What of a source its compiler sees, without the directives.
QString activePart(const QString& source)
{
    QString active;
    Conditions conditions;
    const QString text = withoutComments(source);
    for (int begin = 0, end = 0; begin <= text.size(); begin = end + 1) {
        end = text.indexOf(QLatin1Char('\n'), begin);
        if (end < 0) end = text.size();
        const QStringRef line = text.midRef(begin, end - begin);
        if (const QStringRef trimmed = line.trimmed(); trimmed.startsWith(QLatin1Char('#'))) {
            int at = 1;
            const QString word = takeWord(trimmed, at).toString();
            conditions.read(word, takeWord(trimmed, at).toString());
        } else if (conditions.isActive()) {
            active += line;
            active += QLatin1Char('\n');
        }
    }
    return active;
}

bool mayDeclareBuffers(const QString& source)
{
    const QLatin1String word("buffer");
    for (int at = source.indexOf(word); at >= 0; at = source.indexOf(word, at + 1))
        if (const int end = at + word.size(); end < source.size() && source[end].isSpace()) return true;
    return false;
}

} // namespace

StorageLimits storageOffered(OpenGLFunctions& gl)
{
    StorageLimits offered;
    gl.glGetIntegerv(GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS, &offered.bindings);
    gl.glGetIntegerv(GL_MAX_FRAGMENT_SHADER_STORAGE_BLOCKS, &offered.fragmentBlocks);
    gl.glGetIntegerv(GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS, &offered.geometryBlocks);
    return offered;
}

StorageLimits storageDeclared(const QString& source, unsigned int stage)
{
    // the qualifiers before the word, and no member or function before them
    static const QRegularExpression block(QStringLiteral("([^;{}]*)\\bbuffer\\s+\\w+\\s*\\{"));
    static const QRegularExpression binding(QStringLiteral("\\bbinding\\s*=\\s*(\\d+)"));
    StorageLimits declared;
    const QString active = activePart(source);
    if (!mayDeclareBuffers(active)) return declared; // most do not, and expressions are expensive
    int blocks = 0;
    QRegularExpressionMatchIterator matches = block.globalMatch(active);
    while (matches.hasNext()) {
        ++blocks;
        const int at = binding.match(matches.next().captured(1)).captured(1).toInt();
        declared.bindings = std::max(declared.bindings, at + 1);
    }
    if (stage == GL_FRAGMENT_SHADER) declared.fragmentBlocks = blocks;
    if (stage == GL_GEOMETRY_SHADER) declared.geometryBlocks = blocks;
    return declared;
}

StorageLimits storageOfBoth(const StorageLimits& one, const StorageLimits& other)
{
    StorageLimits both;
    both.bindings = std::max(one.bindings, other.bindings);
    both.fragmentBlocks = one.fragmentBlocks + other.fragmentBlocks;
    both.geometryBlocks = one.geometryBlocks + other.geometryBlocks;
    return both;
}

QString missingStorage(const StorageLimits& needed, const StorageLimits& offered)
{
    const struct
    {
        const char* name;
        int needed;
        int there;
    } limits[] = {
        {"GL_MAX_SHADER_STORAGE_BUFFER_BINDINGS", needed.bindings, offered.bindings},
        {"GL_MAX_FRAGMENT_SHADER_STORAGE_BLOCKS", needed.fragmentBlocks, offered.fragmentBlocks},
        {"GL_MAX_GEOMETRY_SHADER_STORAGE_BLOCKS", needed.geometryBlocks, offered.geometryBlocks},
    };
    for (const auto& limit : limits)
        if (limit.needed > limit.there)
            return QStringLiteral("the driver's %1 is %2, the program needs %3")
                .arg(QLatin1String(limit.name))
                .arg(limit.there)
                .arg(limit.needed);
    return {};
}
