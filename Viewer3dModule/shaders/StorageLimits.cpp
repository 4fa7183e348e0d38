#include <Viewer3dModule/shaders/StorageLimits.h>

#include <Viewer3dModule/shaders/activeSource.h>

#include <QtCore/QByteArrayMatcher>
#include <QtCore/QList>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cctype>

namespace {

// The lines that are no directives; bodies of macros go with these.
QByteArray withoutDirectives(const QByteArray& source)
{
    QByteArray rest;
    bool isDirective = false, isContinued = false;
    for (const QByteArray& line : source.split('\n')) {
        if (!isContinued) isDirective = line.trimmed().startsWith('#');
        isContinued = line.endsWith('\\');
        if (!isDirective) rest += line + '\n';
    }
    return rest;
}

bool mayDeclareBuffers(const QByteArray& source)
{
    const QByteArrayMatcher word("buffer");
    for (int at = word.indexIn(source); at >= 0; at = word.indexIn(source, at + 1))
        if (const int end = at + 6;
            end < source.size() && std::isspace(static_cast<unsigned char>(source[end])))
            return true;
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
    return storageDeclaredActively(activeSource(source.toUtf8()), stage);
}

StorageLimits storageDeclaredActively(const QByteArray& source, unsigned int stage)
{
    // the qualifiers before the word, and no member or function before them
    static const QRegularExpression block(QStringLiteral("([^;{}]*)\\bbuffer\\s+\\w+\\s*\\{"));
    static const QRegularExpression binding(QStringLiteral("\\bbinding\\s*=\\s*(\\d+)"));
    StorageLimits declared;
    if (!mayDeclareBuffers(source)) return declared; // most do not, and expressions are expensive
    const QString active = QString::fromUtf8(withoutDirectives(source));
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
