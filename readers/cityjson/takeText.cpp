#include <readers/cityjson/takeText.h>

namespace readers {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// The end of the text that begins here: behind the bracket that closes its first one.
int endOfText(const QByteArray& bytes, int begin)
{
    int depth = 0;
    bool isQuoted = false;
    for (int i = begin; i < bytes.size(); ++i) {
        const char c = bytes.at(i);
        if (isQuoted) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                isQuoted = false;
        } else if (c == '"') {
            isQuoted = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if ((c == '}' || c == ']') && --depth <= 0) {
            return i + 1;
        }
    }
    return bytes.size();
}

} // namespace

QByteArray takeText(const QByteArray& bytes, int& begin)
{
    const int end = endOfText(bytes, begin);
    const QByteArray text = QByteArray::fromRawData(bytes.constData() + begin, end - begin);
    begin = end;
    while (begin < bytes.size() && isBlank(bytes.at(begin)))
        ++begin;
    return text;
}

} // namespace readers
