#include <benchmarks/works/growthWorks.h>

#include <benchmarks/harness/residentBytes.h>
#include <benchmarks/plain/PlainBlocks.h>
#include <benchmarks/scene/LineItem.h>
#include <benchmarks/works/addElements.h>
#include <benchmarks/works/selectWorks.h>

#include <Viewer3dModule/scene/SelectionOptions.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <random>
#include <stdexcept>

namespace {

/// Of one scene with many polylines.
class Growth
{
public:
    explicit Growth(qint64 size)
        : m_set(size)
        , m_scene(View::whole())
    {
    }

    std::vector<Result> measure()
    {
        m_scene.drawFrame(); // what happens once a scene
        time("built", "built, to their first frame", 1, [this] { build(); });
        time("drawn", "drawn", 3, [this] { m_scene.drawFrame(); });
        time("edited", "edited, one after another", 1, [this] { editAll(); });
        time("selected", "looked at, to select 5 % of them", 3, [this] { select(); });
        time("removed", "removed, one after another", 1, [this] { removeAll(); });
        build();
        std::reverse(m_ids.begin(), m_ids.end());
        time("removed-last-first", "removed, the last one first", 1, [this] { removeAll(); });
        build();
        std::shuffle(m_ids.begin(), m_ids.end(), std::mt19937(5));
        time("removed-at-random", "removed, in any order", 1, [this] { removeAll(); });
        build();
        std::shuffle(m_ids.begin(), m_ids.end(), std::mt19937(5));
        time("removed-at-once", "removed, in any order, by one call", 1, [this] { removeAtOnce(); });
        measurePlain();
        return std::move(m_results);
    }

private:
    void time(const char* key, const char* work, int runs, const std::function<void()>& run)
    {
        const PairedRuns times(PairedRuns::timed([this] { m_scene.prepare(); }, run),
                               {runs > 1 ? 1 : 0, runs, runs, 0.0});
        Result result = Result::of(times);
        result.kind = Result::Growth;
        result.key = QString::fromLatin1(key);
        result.work = QString::fromLatin1(work);
        result.unit = QStringLiteral("µs");
        const double perItem = 1e3 / static_cast<double>(m_set.lines.size());
        result.processor.ours *= perItem;
        result.wall.ours *= perItem;
        m_results.push_back(result);
    }

    /// How removing grows where there is next to nothing to do: what memory itself takes.
    void measurePlain()
    {
        using Blocks = PlainBlocks<sizeof(LineElement), sizeof(LineItem)>;
        Blocks blocks(m_set.lines.size());
        std::vector<LONGID> ids = blocks.ids();
        std::reverse(ids.begin(), ids.end());
        time("plain-last-first",
             "for scale: plain blocks of as many bytes, kept by identifier, the last one first", 1,
             [&] { blocks.remove(ids); });
        blocks = Blocks(m_set.lines.size());
        std::shuffle(ids.begin(), ids.end(), std::mt19937(5));
        time("plain-at-random", "for scale: these in any order", 1, [&] { blocks.remove(ids); });
    }

    void build()
    {
        m_elements = addLines(m_scene, m_set, 1.0f);
        m_ids.clear();
        for (const CModelElement* element : m_elements)
            m_ids.push_back(element->getId());
        m_scene.drawFrame();
    }
    void editAll()
    {
        for (CModelElement* element : m_elements)
            static_cast<LineElement*>(element)->setColor(Qt::green);
        QCoreApplication::processEvents();
    }
    void select()
    {
        const PaintContext pass = m_scene.context();
        if (m_scene.scene().selectItems(pass, QRectF(selectedRect()), {}).empty())
            throw std::runtime_error("nothing is selected");
    }
    void removeAll()
    {
        CModelElementManager* manager = m_scene.model().getItemManager(LineElement::Type);
        for (const LONGID id : m_ids)
            manager->removeItem(id);
        settleEmpty();
    }
    void removeAtOnce()
    {
        m_scene.model().getItemManager(LineElement::Type)->removeItems(m_ids);
        settleEmpty();
    }
    void settleEmpty()
    {
        QCoreApplication::processEvents();
        if (!m_scene.scene().getItems().empty()) throw std::runtime_error("items are left");
    }

    LineSet m_set;
    BenchScene m_scene;
    std::vector<CModelElement*> m_elements;
    std::vector<LONGID> m_ids; // of them, in the order in which they are removed
    std::vector<Result> m_results;
};

std::vector<Result> measureGrowth(qint64 size, const PairedRuns::Effort&)
{
    constexpr double bytesPerItem = 10000.0; // more than what an item has taken so far, with its vertices
    constexpr double gigabyte = 1 << 30;
    const double needed = bytesPerItem * static_cast<double>(size) / gigabyte;
    const double available = static_cast<double>(availableBytes()) / gigabyte;
    if (needed < available) return Growth(size).measure();
    Result result;
    result.kind = Result::Growth;
    result.key = QStringLiteral("built");
    result.work = QStringLiteral("built, to their first frame");
    result.remark = QStringLiteral("not run: takes %1 GB, %2 GB are free")
                        .arg(needed, 0, 'f', 0)
                        .arg(available, 0, 'f', 0);
    return {result};
}

} // namespace

std::vector<Work> growthWorks()
{
    return {{QStringLiteral("growth"),
             QString(),
             0.0,
             {1000, 10000, 100000, 1000000},
             {1000, 10000},
             measureGrowth}};
}
