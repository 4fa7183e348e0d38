#include <Viewer3dModule/shaders/StorageLimits.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <algorithm>

namespace {

QString withoutComments(QString source)
{
    static const QRegularExpression comment(QStringLiteral("//[^\\n]*|/\\*.*?\\*/"),
                                            QRegularExpression::DotMatchesEverythingOption);
    source.replace(QStringLiteral("\\\n"), QStringLiteral(" "));
    return source.replace(comment, QStringLiteral(" "));
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
    static const QRegularExpression directive(QStringLiteral("^\\s*#\\s*(\\w+)\\s*(\\w*)"));
    QString active;
    Conditions conditions;
    for (const QString& line : withoutComments(source).split(QLatin1Char('\n'))) {
        if (const QRegularExpressionMatch match = directive.match(line); match.hasMatch())
            conditions.read(match.captured(1), match.captured(2));
        else if (conditions.isActive())
            active += line + QLatin1Char('\n');
    }
    return active;
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
    int blocks = 0;
    QRegularExpressionMatchIterator matches = block.globalMatch(activePart(source));
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
