#include <readers/cityjson/readCityJson.h>

#include <framework/ksp/CommonError.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/JsonReader.h>
#include <readers/common/reading.h>

#include <QtCore/QFile>

namespace readers {

namespace {

constexpr qint64 largest = 1024 * 1024 * 1024; // bytes

/// Thrown when enough is known.
struct Known
{
    bool isCity;
};

class RootLooker : public JsonHandler
{
public:
    void onNull() override {}
    void onBoolean(bool) override {}
    void onInteger(std::int64_t) override {}
    void onNumber(double) override {}
    void onString(std::string& text) override
    {
        if (m_depth == 1 && m_isType) throw Known{text.compare(0, 8, "CityJSON") == 0};
    }
    void onObject() override { ++m_depth; }
    void onArray() override
    {
        if (m_depth++ == 0) throw Known{false};
    }
    void onKey(std::string& name) override
    {
        if (m_depth != 1) return;
        m_isType = name == "type";
        if (name == "CityObjects") throw Known{true};
    }
    void onObjectEnd() override
    {
        if (--m_depth == 0) throw Known{false}; // another text may follow
    }
    void onArrayEnd() override { --m_depth; }

private:
    int m_depth = 0;
    bool m_isType = false;
};

} // namespace

CityJsonParser::Elements readCityJson(const QString& path, std::optional<double> lod,
                                      ksp::StagedProgress progress)
{
    CityJsonParser::Elements elements;
    withFile(path, [&](QIODevice& device) {
        if (device.size() > largest) throw ksp::CommonError(QStringLiteral("is larger than 1 GiB"));
        elements = CityJsonParser(path, lod, progress).parse(device.readAll());
    });
    return elements;
}

bool isCityJson(const QString& path)
{
    try {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly) || file.size() > largest) return false;
        // not copied: most files say it at once
        const uchar* bytes = file.map(0, file.size());
        if (!bytes) return false;
        RootLooker looker;
        JsonReader(
            QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), static_cast<int>(file.size())),
            ksp::StagedProgress::dummy())
            .read(looker);
    } catch (const Known& known) {
        return known.isCity;
    } catch (const ksp::CommonError&) {
    }
    return false;
}

} // namespace readers
