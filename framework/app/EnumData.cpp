#include <framework/app/EnumData.h>

#include <framework/ksp/Log.h>

#include <algorithm>
#include <list>
#include <mutex>

namespace {

/// A list, because pointers to its records are handed out.
struct Records
{
    std::mutex mutex;
    std::list<EnumData> list;
};

Records& records()
{
    static Records* const instance = new Records; // modules look records up until the very end
    return *instance;
}

template <typename Predicate>
const EnumData* find(const Predicate& predicate)
{
    Records& all = records();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto found = std::find_if(all.list.begin(), all.list.end(), predicate);
    return found == all.list.end() ? nullptr : &*found;
}

bool add(const EnumData& data)
{
    Records& all = records();
    const std::lock_guard<std::mutex> lock(all.mutex);
    for (const EnumData& record : all.list)
        if (record.id == data.id || record.key == data.key) return false;
    all.list.push_back(data);
    return true;
}

} // namespace

bool registerEnumData(const EnumData& data)
{
    if (add(data)) return true;
    ksp::Log::error(QStringLiteral("Type 0x%1 \"%2\" is not registered: its identifier or key is taken")
                        .arg(static_cast<unsigned>(data.id), 8, 16, QLatin1Char('0'))
                        .arg(data.key));
    return false;
}

const EnumData* findEnumData(int id)
{
    return find([id](const EnumData& record) { return record.id == id; });
}

const EnumData* findEnumData(const QString& key)
{
    return find([&key](const EnumData& record) { return record.key == key; });
}

std::vector<EnumData> getEnumData()
{
    Records& all = records();
    const std::lock_guard<std::mutex> lock(all.mutex);
    return {all.list.begin(), all.list.end()};
}
