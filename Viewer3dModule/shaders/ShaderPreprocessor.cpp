#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <QtCore/QFile>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>

namespace {

// The file that an include line names; null when the line is none.
QString includedFile(const QString& line)
{
    if (!line.contains(QLatin1String("//#include"))) return {};
    const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() < 2 || words[0] != QLatin1String("//#include") || words[1].size() <= 2) return {};
    const QStringList unquoted = words[1].split(QLatin1Char('"'), Qt::SkipEmptyParts);
    return unquoted.isEmpty() ? QStringLiteral("") : unquoted.first();
}

// Calls use(line) for each line, without its end, until it returns false.
template <typename Use>
void forEachLine(const QString& fileName, Use use)
{
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) return;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    QString line;
    while (in.readLineInto(&line))
        if (!use(line)) return;
}

} // namespace

void appendShaderSource(const QString& fileName, QTextStream& out, const std::vector<std::string>& defines)
{
    forEachLine(fileName, [&](const QString& line) {
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

bool doesContainInclude(const QString& fileName)
{
    bool found = false;
    forEachLine(fileName, [&](const QString& line) {
        found = !includedFile(line).isNull();
        return !found;
    });
    return found;
}
