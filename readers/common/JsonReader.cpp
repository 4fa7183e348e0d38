#include <readers/common/JsonReader.h>

#include <framework/ksp/CommonError.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace readers {

namespace {

using Json = nlohmann::json;

// The parser's own words without its name, the line and the text that it read last, which may be very long.
QString shortened(std::string_view reason)
{
    const std::size_t begin = reason.find(" - ");
    if (begin != reason.npos) reason.remove_prefix(begin + 3);
    reason = reason.substr(0, reason.find("; last read"));
    return QString::fromUtf8(reason.data(), static_cast<int>(reason.size()));
}

} // namespace

// Goes through the text for the parser. All copies are at the reader's place.
struct JsonReader::Cursor
{
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    JsonReader* reader = nullptr;

    reference operator*() const { return *reader->m_next; }
    Cursor& operator++()
    {
        if (++reader->m_next == reader->m_lookAt) reader->look();
        return *this;
    }
    // Is compared with the end only. The parser itself would say of a text that ends within a string what all
    // that string is.
    bool operator!=(const Cursor&) const
    {
        if (reader->getOffset() < reader->m_text.size()) return true;
        if (reader->m_depth > 0) reader->fail(reader->m_text.size(), QStringLiteral("it ends too early"));
        return false;
    }
};

// Passes what the parser finds on to the handler.
class JsonReader::Events : public nlohmann::json_sax<Json>
{
public:
    Events(JsonReader& reader, JsonHandler& handler)
        : m_reader(reader)
        , m_handler(handler)
    {
    }

    bool null() override
    {
        return tell([this] { m_handler.onNull(); });
    }
    bool boolean(bool value) override
    {
        return tell([&] { m_handler.onBoolean(value); });
    }
    bool number_integer(number_integer_t value) override
    {
        return tell([&] { m_handler.onInteger(value); });
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        constexpr auto largest = static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max());
        if (value > largest) return tell([&] { m_handler.onNumber(static_cast<double>(value)); });
        return tell([&] { m_handler.onInteger(static_cast<std::int64_t>(value)); });
    }
    bool number_float(number_float_t value, const string_t&) override
    {
        return tell([&] { m_handler.onNumber(value); });
    }
    bool string(string_t& text) override
    {
        return tell([&] { m_handler.onString(text); });
    }
    bool binary(binary_t&) override { return false; } // stands in no text
    bool key(string_t& name) override
    {
        return tell([&] { m_handler.onKey(name); });
    }
    bool start_object(std::size_t) override
    {
        m_reader.goDown();
        return tell([this] { m_handler.onObject(); });
    }
    bool end_object() override
    {
        --m_reader.m_depth;
        return tell([this] { m_handler.onObjectEnd(); });
    }
    bool start_array(std::size_t) override
    {
        m_reader.goDown();
        return tell([this] { m_handler.onArray(); });
    }
    bool end_array() override
    {
        --m_reader.m_depth;
        return tell([this] { m_handler.onArrayEnd(); });
    }
    bool parse_error(std::size_t offset, const std::string&,
                     const nlohmann::detail::exception& error) override
    {
        constexpr int numberTooLarge = 406;
        m_reader.fail(static_cast<std::ptrdiff_t>(offset), error.id == numberTooLarge
                                                               ? QStringLiteral("a number is too large")
                                                               : shortened(error.what()));
    }

private:
    template <typename Function>
    bool tell(Function function)
    {
        function();
        m_reader.m_told = m_reader.m_next;
        return true;
    }

    JsonReader& m_reader;
    JsonHandler& m_handler;
};

JsonReader::JsonReader(QByteArray text, ksp::StagedProgress progress)
    : m_text(std::move(text))
    , m_next(m_text.constData())
    , m_progress(std::move(progress))
{
}

void JsonReader::read(JsonHandler& handler)
{
    m_progress.throwIfCanceled();
    checkBegin();
    m_next = m_told = m_text.constData();
    m_lookAt = m_next + 1;
    m_depth = 0;
    Events events(*this, handler);
    Json::sax_parse(Cursor{this}, Cursor{this}, &events);
    m_progress.throwIfCanceled();
    m_progress.setPercentage(100.0);
}

void JsonReader::checkBegin() const
{
    int i = m_text.startsWith("\xef\xbb\xbf") ? 3 : 0;
    while (i < m_text.size() && std::string_view(" \t\n\r").find(m_text.at(i)) != std::string_view::npos)
        ++i;
    if (i == m_text.size() || (m_text.at(i) != '{' && m_text.at(i) != '['))
        fail(i, QStringLiteral("there is no object and no list"));
}

void JsonReader::goDown()
{
    if (++m_depth > deepest) fail(getOffset(), QStringLiteral("lists or objects nest too deeply"));
}

// Now and then. The parser would keep all digits of a number, and more than once when it is too large.
void JsonReader::look()
{
    constexpr int step = 1 << 16;
    constexpr int longestNumber = step;
    m_progress.throwIfCanceled();
    m_progress.setDone(getOffset(), m_text.size());
    m_lookAt = m_next + std::min(step, m_text.size() - getOffset());
    while (m_told != m_next && std::string_view(" \t\n\r,:").find(*m_told) != std::string_view::npos)
        ++m_told; // to the begin of the word under way
    if (m_next - m_told > longestNumber && *m_told != '"')
        fail(getOffset(), QStringLiteral("a number of more than %1 characters").arg(longestNumber));
}

void JsonReader::fail(std::ptrdiff_t offset, const QString& reason) const
{
    throw ksp::CommonError(QStringLiteral("is not valid JSON at byte %1: %2").arg(offset).arg(reason));
}

} // namespace readers
