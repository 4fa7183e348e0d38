#include "ViewerProcess.h"

#include "../../support/LogTrap.h"

#include <viewer/ElementSummary.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MeshElement.h>
#include <viewer/elements/ViewpointElement.h>

#include <framework/ksp/Canceled.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/FeatureElement.h>

#include <memory>

namespace {

const QByteArray houses = "v 2700000 1200000 400\nv 2700010 1200000 400\nv 2700000 1200010 400\n"
                          "o first\nf 1 2 3\no second\nf 1 3 2\nf 1 2 3\n";

const QByteArray plots = R"({"type":"FeatureCollection","features":[
    {"type":"Feature","id":"p-7","properties":{"name":"Meadow","stroke":"#102030","stroke-width":2.5,"owners":3},
     "geometry":{"type":"Polygon","coordinates":[[[2700000.001,1200000.002,400.003],[2700010,1200000,400],[2700000,1200010,401],[2700000.001,1200000.002,400.003]]]}},
    {"type":"Feature","properties":{"name":"Well","marker-color":"#ff0000","dash":true},
     "geometry":{"type":"Point","coordinates":[2700005,1200005,399.5]}}]})";

/// A progress that is cancelled when it has reported a number of times.
class Canceller
{
public:
    explicit Canceller(int reports)
        : m_left(reports)
        , m_progress([this](double, const QString&) {
            if (m_handle && m_left-- == 0) m_handle->cancel();
        })
    {
        m_handle = std::make_unique<ksp::StagedProgress>(m_progress);
    }
    const ksp::StagedProgress& progress() const { return m_progress; }

private:
    int m_left;
    std::unique_ptr<ksp::StagedProgress> m_handle;
    ksp::StagedProgress m_progress;
};

QVariantMap propertiesOf(const CModelElement& element)
{
    QVariantMap all;
    for (const QString& name : element.getPropertyNames())
        all[name] = element.getProperty(name);
    return all;
}

} // namespace

/// Files into the model, without any scene.
class Opener : public ViewerTest
{
protected:
    void SetUp() override
    {
        ViewerTest::SetUp();
        m_project = m_host.createProject();
        m_opener = std::make_unique<FileOpener>(m_host, *m_project, nullptr);
    }
    void open(const QStringList& files) { m_opener->open(files, ksp::StagedProgress::dummy()); }
    /// One line an element: identifier, type, name, counts and whether a mesh has its geometry.
    QStringList content() const
    {
        QStringList lines;
        for (const CModelElementManager* manager : m_project->getModel()->getItemManagers()) {
            for (const CModelElement* element : manager->getItems()) {
                const ElementSummary summary = ElementSummary::of(*element);
                lines.append(QString("%1 %2 %3 %4 %5")
                                 .arg(element->getId())
                                 .arg(element_types::name(element->getType()), element->getName())
                                 .arg(summary.lines)
                                 .arg(summary.triangles));
            }
        }
        return lines;
    }

    Host m_host{Host::Settings::InMemory};
    std::unique_ptr<CProject> m_project;
    std::unique_ptr<FileOpener> m_opener;
};

TEST_F(Opener, CancelledProjectLeavesWhatIsOpenWhereverItIsCancelled)
{
    open({write("houses.obj", houses), write("plots.geojson", plots)});
    m_opener->save(path("saved.v3d"), ksp::StagedProgress::dummy());
    m_project->clear();
    open({write("other.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")});
    const QStringList before = content();
    ASSERT_EQ(before.size(), 1);
    int cancelled = 0;
    for (int reports = 0; content() == before; ++reports) {
        ASSERT_LT(reports, 10'000);
        const Canceller canceller(reports);
        try {
            if (reports % 2 == 0)
                m_opener->openProject(path("saved.v3d"), canceller.progress());
            else
                m_opener->open({path("saved.v3d")}, canceller.progress());
        } catch (const ksp::Canceled&) {
            EXPECT_EQ(content(), before) << reports;
            ++cancelled;
        }
    }
    EXPECT_GT(cancelled, 5) << "this cancels nothing";
    // what is not cancelled is whole
    const QStringList after = content();
    ASSERT_EQ(after.size(), 4) << qPrintable(after.join('\n'));
    EXPECT_TRUE(after[0].endsWith("mesh first 0 1")) << qPrintable(after[0]);
    EXPECT_TRUE(after[1].endsWith("mesh second 0 2")) << qPrintable(after[1]);
}

TEST_F(Opener, CancelledFileLeavesNothing)
{
    QByteArray big = houses;
    for (int i = 0; i < 50'000; ++i)
        big += "f 1 2 3\n";
    const QString file = write("big.obj", big);
    int cancelled = 0;
    for (bool isDone = false; !isDone; ++cancelled) {
        ASSERT_EQ(content(), QStringList());
        const Canceller canceller(cancelled);
        try {
            m_opener->open({file}, canceller.progress());
            isDone = true;
        } catch (const ksp::Canceled&) {
        }
    }
    EXPECT_GT(cancelled, 5) << "this cancels nothing";
    EXPECT_EQ(content().size(), 2);
}

TEST_F(Opener, BadFileOfAProjectKeepsWhatWasOpen)
{
    open({write("houses.obj", houses)});
    m_opener->save(path("saved.v3d"), ksp::StagedProgress::dummy());
    m_project->clear();
    open({write("other.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")});
    const QStringList before = content();
    QFile::remove(path("houses.obj"));
    EXPECT_THROW(open({path("saved.v3d")}), ksp::CommonError);
    EXPECT_EQ(content(), before);
}

TEST_F(Opener, ProjectComesBackWithFeaturesNamesPropertiesAndIdentifiers)
{
    open({write("houses.obj", houses), write("plots.geojson", plots)});
    auto kept = std::make_unique<ViewpointElement>();
    kept->setName("From the well");
    m_project->getModel()->getCreateItemManager(element_types::Viewpoint)->addItem(std::move(kept));
    const QStringList before = content();
    ASSERT_EQ(before.size(), 5);
    const auto features = [this] {
        std::vector<const FeatureElement*> all;
        for (CModelElement* element :
             m_project->getModel()->getItemManager(element_types::Feature)->getItems())
            all.push_back(static_cast<FeatureElement*>(element));
        return all;
    };
    const QVariantMap properties = propertiesOf(*features()[0]);
    const std::vector<glm::dvec3> points = features()[0]->getParts()[0].points;
    ASSERT_EQ(properties.value("owners").toInt(), 3);
    m_opener->save(path("saved.v3d"), ksp::StagedProgress::dummy());

    m_project->clear();
    ASSERT_EQ(content(), QStringList());
    open({path("saved.v3d")});
    EXPECT_EQ(content(), before);
    ASSERT_EQ(features().size(), 2u);
    EXPECT_EQ(propertiesOf(*features()[0]), properties);
    EXPECT_EQ(features()[0]->getSourceId(), "p-7");
    EXPECT_EQ(features()[0]->getParts()[0].points, points); // to the last bit
    EXPECT_EQ(features()[0]->getParts()[0].kind, FeatureElement::Part::Ring);
    EXPECT_TRUE(features()[1]->getProperty("dash").toBool());
}

TEST_F(Opener, SameFileTwiceComesBackTwice)
{
    const QString file = write("houses.obj", houses);
    open({file, file});
    const QStringList before = content();
    ASSERT_EQ(before.size(), 4);
    m_opener->save(path("saved.v3d"), ksp::StagedProgress::dummy());
    m_project->clear();
    EXPECT_EQ(m_opener->openProject(path("saved.v3d"), ksp::StagedProgress::dummy()), QStringList());
    EXPECT_EQ(content(), before);
}

TEST_F(Opener, FileThatLostAPartIsToldAndGivesTheRest)
{
    open({write("houses.obj", houses)});
    m_opener->save(path("saved.v3d"), ksp::StagedProgress::dummy());
    write("houses.obj", houses.left(houses.indexOf("o second")));
    m_project->clear();
    EXPECT_EQ(m_opener->openProject(path("saved.v3d"), ksp::StagedProgress::dummy()),
              QStringList(path("houses.obj") + ": has fewer parts than when the project was saved"));
    ASSERT_EQ(content().size(), 2);
    EXPECT_TRUE(content()[0].endsWith("first 0 1")) << qPrintable(content()[0]);
    EXPECT_TRUE(content()[1].endsWith("second 0 0")) << qPrintable(content()[1]);
}
