#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <QtCore/QFile>
#include <QtCore/QTextStream>
#include <QtCore/QVector>

namespace {

// The file that an include line names; null when the line is none.
QString includedFile(const QStringRef& line)
{
    int begin = 0;
    while (begin < line.size() && line[begin] == QLatin1Char(' '))
        ++begin;
    if (!line.mid(begin).startsWith(QLatin1String("//#include "))) return {}; // most lines
    const QVector<QStringRef> words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() < 2 || words[1].size() <= 2) return {};
    const QVector<QStringRef> unquoted = words[1].split(QLatin1Char('"'), Qt::SkipEmptyParts);
    return unquoted.isEmpty() ? QStringLiteral("") : unquoted.first().toString();
}

// Calls use(line) for each line, without its end, until it returns false.
template <typename Use>
void forEachLine(const QString& fileName, Use use)
{
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) return;
    const QString text = QString::fromUtf8(file.readAll());
    for (int begin = 0, end = 0; begin < text.size(); begin = end + 1) {
        end = text.indexOf(QLatin1Char('\n'), begin);
        if (end < 0) end = text.size();
        if (!use(text.midRef(begin, end - begin))) return;
    }
}

const char* const placeOfDefines = "@"; // no name and in no source

} // namespace

void appendShaderSource(const QString& fileName, QTextStream& out, const std::vector<std::string>& defines)
{
    forEachLine(fileName, [&](const QStringRef& line) {
        if (!defines.empty() && line.startsWith(QLatin1String("#version"))) {
            out << line << '\n';
            for (const std::string& define : defines)
                out << "#define " << QString::fromStdString(define) << '\n';
        } else if (const QString included = includedFile(line); !included.isNull()) {
            appendShaderSource(included, out, {});
        } else {
            out << line << '\n';
        }
        return true;
    });
}

QString preprocessShader(const QString& fileName, const std::vector<std::string>& defines)
{
    QString source;
    QTextStream stream(&source, QIODevice::ReadWrite);
    appendShaderSource(fileName, stream, defines);
    return source;
}

QString preprocessForDefines(const QString& fileName)
{
    return preprocessShader(fileName, {placeOfDefines});
}

QString withDefines(QString source, const std::vector<std::string>& defines)
{
    QString lines;
    for (const std::string& define : defines)
        lines += QStringLiteral("#define %1\n").arg(QString::fromStdString(define));
    return source.replace(QStringLiteral("#define %1\n").arg(QLatin1String(placeOfDefines)), lines);
}

bool doesContainInclude(const QString& fileName)
{
    bool found = false;
    forEachLine(fileName, [&](const QStringRef& line) {
        found = !includedFile(line).isNull();
        return !found;
    });
    return found;
}
