#include <Viewer3dModule/shaders/ShaderPreprocessor.h>

#include <QtCore/QFile>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

namespace {

std::string_view viewOf(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

bool startsWith(std::string_view text, std::string_view begin)
{
    return text.substr(0, begin.size()) == begin;
}

// The next word between these; leads the text behind it.
std::string_view takeWord(std::string_view& text, char separator)
{
    const std::size_t begin = std::min(text.find_first_not_of(separator), text.size());
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    const std::string_view word = text.substr(begin, end - begin);
    text.remove_prefix(end);
    return word;
}

// The file that an include line names; none when the line is none.
std::optional<QString> includedFile(std::string_view line)
{
    if (!startsWith(line, " ") && !startsWith(line, "//#include ")) return std::nullopt; // most lines
    if (takeWord(line, ' ') != "//#include") return std::nullopt;
    std::string_view name = takeWord(line, ' ');
    if (name.size() <= 2) return std::nullopt;
    name = takeWord(name, '"');
    return QString::fromUtf8(name.data(), static_cast<int>(name.size()));
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) return {};
    const QByteArray content = file.readAll();
    return content.startsWith("\xEF\xBB\xBF") ? content.mid(3) : content;
}

// Calls use(line) for each line, without its end, until it returns false.
template <typename Use>
void forEachLine(std::string_view text, Use use)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (!use(text.substr(0, end))) return;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

void append(const QString& fileName, QByteArray& out, const QByteArray& afterVersion)
{
    const QByteArray content = contentOf(fileName);
    forEachLine(viewOf(content), [&](std::string_view line) {
        if (const std::optional<QString> included = includedFile(line)) {
            append(*included, out, {});
            return true;
        }
        out.append(line.data(), static_cast<int>(line.size())).append('\n');
        if (!afterVersion.isEmpty() && startsWith(line, "#version")) out.append(afterVersion);
        return true;
    });
}

QByteArray linesOf(const std::vector<std::string>& defines)
{
    QByteArray lines;
    for (const std::string& define : defines)
        lines.append("#define ").append(define.data(), static_cast<int>(define.size())).append('\n');
    return lines;
}

const char* const placeOfDefines = "#define @\n"; // no name and in no source

} // namespace

void appendShaderSource(const QString& fileName, QTextStream& out, const std::vector<std::string>& defines)
{
    out << preprocessShader(fileName, defines);
}

QString preprocessShader(const QString& fileName, const std::vector<std::string>& defines)
{
    QByteArray source;
    append(fileName, source, linesOf(defines));
    return QString::fromUtf8(source);
}

QByteArray preprocessForDefines(const QString& fileName)
{
    QByteArray source;
    append(fileName, source, placeOfDefines);
    return source;
}

QByteArray withDefines(QByteArray source, const std::vector<std::string>& defines)
{
    return source.replace(placeOfDefines, linesOf(defines));
}

bool doesContainInclude(const QString& fileName)
{
    bool found = false;
    const QByteArray content = contentOf(fileName);
    forEachLine(viewOf(content), [&](std::string_view line) {
        found = includedFile(line).has_value();
        return !found;
    });
    return found;
}
