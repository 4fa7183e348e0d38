#include <readers/cityjson/readNumbers.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/JsonReader.h>

#include <algorithm>

namespace readers {

namespace {

class NumberRows : public JsonHandler
{
public:
    NumberRows(const QString& name, int rowDepth, std::size_t width,
               const std::function<void(const double*)>& add)
        : m_name(name)
        , m_rowDepth(rowDepth)
        , m_width(width)
        , m_add(add)
    {
    }

    void onNull() override { fail(); }
    void onBoolean(bool) override { fail(); }
    void onInteger(std::int64_t value) override { addNumber(static_cast<double>(value)); }
    void onNumber(double value) override { addNumber(value); }
    void onString(std::string&) override { fail(); }
    void onObject() override { fail(); }
    void onKey(std::string&) override {}
    void onObjectEnd() override {}
    void onArray() override
    {
        if (++m_depth > m_rowDepth) fail();
        m_count = 0;
    }
    void onArrayEnd() override
    {
        if (m_depth-- != m_rowDepth) return;
        if (m_count != m_width) fail();
        m_add(m_row);
        ++m_rowCount;
    }

private:
    void addNumber(double value)
    {
        if (m_depth != m_rowDepth || m_count == m_width) fail();
        m_row[m_count++] = value;
    }
    [[noreturn]] void fail() const
    {
        const QString place = m_rowDepth > 1 ? QStringLiteral("%1 %2").arg(m_name).arg(m_rowCount) : m_name;
        throw ksp::CommonError(QStringLiteral("%1 is no list of %2 numbers").arg(place).arg(m_width));
    }

    QString m_name;
    int m_rowDepth;
    std::size_t m_width;
    const std::function<void(const double*)>& m_add;
    int m_depth = 0;
    double m_row[16] = {};
    std::size_t m_count = 0;
    std::size_t m_rowCount = 0;
};

} // namespace

void readNumberRows(const QByteArray& text, const QString& name, std::size_t width,
                    const std::function<void(const double* row)>& add, ksp::StagedProgress progress)
{
    NumberRows rows(name, 2, width, add);
    JsonReader(text, std::move(progress)).read(rows);
}

void readNumberRow(const QByteArray& text, const QString& name, std::size_t width, double* row)
{
    const std::function<void(const double*)> add = [&](const double* numbers) {
        std::copy(numbers, numbers + width, row);
    };
    if (text.isEmpty())
        throw ksp::CommonError(QStringLiteral("%1 is no list of %2 numbers").arg(name).arg(width));
    NumberRows rows(name, 1, width, add);
    JsonReader(text, ksp::StagedProgress::dummy()).read(rows);
}

} // namespace readers
