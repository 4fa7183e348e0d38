#include "ModelFixtures.h"

#include <framework/ksp/CFileException.h>
#include <framework/ksp/Canceled.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <tests/support/LogTrap.h>

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <stdexcept>
#include <sys/resource.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

// A project as a host makes it: what it knows is registered, and nothing is in it.
std::unique_ptr<CProject> makeProject()
{
    auto project = std::make_unique<CProject>();
    project->getModel()->registerCreator(std::make_unique<COrdinaryItemCreator<PointElement>>());
    project->getModel()->registerCreator(std::make_unique<COrdinaryItemCreator<LineElement>>());
    addSettings<LightElement>(*project);
    addSettings<CameraElement>(*project, CProject::HiddenSettings);
    return project;
}

template <typename Element>
Element* settingsOf(const CProject& project)
{
    return static_cast<Element*>(project.getProjectSettings(Element().getType()));
}

template <typename Element>
CModelElement* addElement(CProject& project, const QString& name, int number)
{
    auto element = std::make_unique<Element>(number);
    element->setName(name);
    return project.getModel()->getCreateItemManager(element->getType())->addItem(std::move(element));
}

std::string describe(const CModelElementManager* manager)
{
    std::string text;
    for (const CModelElement* element : manager ? manager->getItems() : std::vector<CModelElement*>()) {
        const int number = element->getType() == 0x101 ? static_cast<const PointElement*>(element)->number
                                                       : static_cast<const LineElement*>(element)->number;
        text += std::to_string(element->getId()) + element->getName().toStdString() + std::to_string(number) +
                ' ';
    }
    return text;
}

// Everything that a project file is to bring back.
std::string describe(const CProject& project)
{
    return describe(project.getModel()->getItemManager(0x101)) + "| " +
           describe(project.getModel()->getItemManager(0x102)) + "| " +
           std::to_string(settingsOf<LightElement>(project)->number) + ' ' +
           std::to_string(settingsOf<CameraElement>(project)->number);
}

class ProjectFileTest : public testing::Test
{
protected:
    // 1 a, 3 c are points, 2 b is a line; the light is 7.
    void fill(CProject& project)
    {
        addElement<PointElement>(project, "a", 10);
        addElement<LineElement>(project, "b", 20);
        addElement<PointElement>(project, "c", 30);
        settingsOf<LightElement>(project)->number = 7;
        settingsOf<CameraElement>(project)->number = 8;
    }
    QString path(const QString& name = "town.project") const { return m_folder.filePath(name); }
    QByteArray saved(CProject& project)
    {
        project.save(path());
        return CQtArchive::readFile(path());
    }
    // Without the care that a saved project gets, which takes milliseconds a file.
    void write(const QByteArray& bytes)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    // The message with which opening fails.
    std::string refusal(CProject& project, const QString& file)
    {
        try {
            project.open(file);
        } catch (const ksp::CFileException& error) {
            return error.what();
        }
        return "opened";
    }

private:
    QTemporaryDir m_folder;
};

// A file whose frame is right and whose content is what the test says.
QByteArray handMade(LONGID next, const std::function<void(CQtArchive&)>& content,
                    std::uint32_t mark = 0x4A504D50)
{
    CQtArchive archive;
    archive.beginObject();
    archive.writeUInt(mark);
    archive.writeInt64(next);
    content(archive);
    archive.endObject(1);
    archive.finish();
    return archive.data();
}

QByteArray bytesOf(CModelElement& element)
{
    CQtArchive archive;
    element.serialize(archive);
    return archive.data();
}

// No settings, and points with these identifiers.
QByteArray fileWithPoints(LONGID next, const std::vector<LONGID>& ids)
{
    return handMade(next, [&ids](CQtArchive& archive) {
        archive.writeUInt(0);
        archive.writeUInt(1);
        archive.writeInt(0x101);
        archive.writeUInt(static_cast<std::uint32_t>(ids.size()));
        for (LONGID id : ids) {
            PointElement point;
            QByteArray bytes = bytesOf(point);
            archive.writeInt64(id);
            archive.value(bytes);
        }
    });
}

} // namespace

TEST_F(ProjectFileTest, BringsEverythingBack)
{
    auto project = makeProject();
    fill(*project);
    project->getModel()->getElement(1)->setVisible(false);
    project->getModel()->getElement(1)->setProperty("height", 2.5);
    project->save(path());
    EXPECT_EQ(project->getPath(), path());

    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(describe(*opened), "1a10 3c30 | 2b20 | 7 0");
    EXPECT_FALSE(opened->getModel()->getElement(1)->isVisible());
    EXPECT_EQ(opened->getModel()->getElement(1)->getProperty("height"), QVariant(2.5));
    EXPECT_EQ(opened->getPath(), path());
}

TEST_F(ProjectFileTest, SavingWhatWasOpenedGivesTheSameFile)
{
    auto project = makeProject();
    fill(*project);
    const QByteArray first = saved(*project);
    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(saved(*opened), first);
}

TEST_F(ProjectFileTest, EmptyProjectRoundTrip)
{
    auto project = makeProject();
    project->save(path());
    auto opened = makeProject();
    fill(*opened);
    opened->open(path());
    EXPECT_EQ(describe(*opened), "| | 0 0");
}

TEST_F(ProjectFileTest, OpeningReplacesWhatWasThere)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());
    addElement<PointElement>(*project, "d", 40);
    settingsOf<LightElement>(*project)->number = 9;
    project->open(path());
    EXPECT_EQ(describe(*project), "1a10 3c30 | 2b20 | 7 0");
}

TEST_F(ProjectFileTest, IdentifiersAreNotGivenAgainAfterOpening)
{
    auto project = makeProject();
    fill(*project);
    project->getModel()->getItemManager(0x101)->removeItem(3);
    project->save(path());
    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(addElement<PointElement>(*opened, "d", 0)->getId(), 4);
}

TEST_F(ProjectFileTest, IdentifiersOfAModelThatGaveMoreAreNotGivenAgain)
{
    auto small = makeProject();
    addElement<PointElement>(*small, "a", 0);
    small->save(path());
    auto project = makeProject();
    fill(*project);
    project->open(path());
    EXPECT_EQ(addElement<PointElement>(*project, "d", 0)->getId(), 4);
}

TEST_F(ProjectFileTest, EachTypeComesInOneBatchAfterTheSettings)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());

    auto opened = makeProject();
    Extension points, lines;
    opened->getModel()->getCreateItemManager(0x101)->registerExtension(&points);
    opened->getModel()->getCreateItemManager(0x102)->registerExtension(&lines);
    std::vector<int> replaced;
    QObject::connect(opened.get(), &CProject::projectSettingsReplaced, [&](int type) {
        EXPECT_EQ(opened->getModel()->getElementsCount(), 0);
        replaced.push_back(type);
    });
    points.onAdded = [&](const auto&) { EXPECT_EQ(settingsOf<LightElement>(*opened)->number, 7); };
    opened->open(path());
    EXPECT_THAT(points.told, ElementsAre("+1,3"));
    EXPECT_THAT(lines.told, ElementsAre("+2"));
    EXPECT_THAT(replaced, ElementsAre(0x201, 0x202));
    opened->open(path());
    EXPECT_THAT(points.told, ElementsAre("+1,3", "-1,3", "+1,3"));
}

TEST_F(ProjectFileTest, ObserversOfOldSettingsHaveLeftWhenTheyAreReplaced)
{
    auto project = makeProject();
    project->save(path());
    Observer observer;
    project->getProjectSettings(0x201)->addObserver(&observer);
    project->open(path());
    EXPECT_THAT(observer.getSubjects(), IsEmpty());
}

TEST_F(ProjectFileTest, ElementsAddedByWhoIsToldOfTheOldOnesGoingDoNotTakeTheIdentifiersOfTheFile)
{
    auto source = makeProject();
    fill(*source);
    source->save(path());

    auto project = makeProject();
    addElement<PointElement>(*project, "x", 0);
    Extension extension;
    project->getModel()->getItemManager(0x101)->registerExtension(&extension);
    extension.onRemoved = [&](const auto&) {
        extension.onRemoved = {};
        addElement<LineElement>(*project, "n", 0);
    };
    project->open(path());
    EXPECT_EQ(describe(*project), "1a10 3c30 | 4n0 2b20 | 7 0");
}

TEST_F(ProjectFileTest, UnknownTypesAreKeptAndWrittenAgain)
{
    auto project = makeProject();
    fill(*project);
    const QByteArray first = saved(*project);

    CProject ignorant; // knows nothing at all
    ignorant.open(path());
    EXPECT_EQ(ignorant.getModel()->getElementsCount(), 0);
    EXPECT_THAT(ignorant.getAllProjectSettings(), IsEmpty());
    EXPECT_EQ(saved(ignorant), first);

    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(describe(*opened), "1a10 3c30 | 2b20 | 7 0");
}

TEST_F(ProjectFileTest, IdentifiersOfUnknownElementsAreTaken)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());

    CProject ignorant;
    ignorant.getModel()->registerCreator(std::make_unique<COrdinaryItemCreator<PointElement>>());
    ignorant.open(path());
    EXPECT_EQ(ignorant.getModel()->getElement(2), nullptr);
    EXPECT_EQ(addElement<LineElement>(ignorant, "d", 40)->getId(), 4); // beside the unknown line 2
    ignorant.save(path());

    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(describe(*opened), "1a10 3c30 | 2b20 4d40 | 7 0");
}

TEST_F(ProjectFileTest, UnknownContentGoesWithTheProjectThatHadIt)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());
    CProject ignorant;
    ignorant.open(path());
    ignorant.clear();
    EXPECT_EQ(ignorant.getPath(), QString());
    ignorant.save(path());
    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(describe(*opened), "| | 0 0");
}

TEST_F(ProjectFileTest, SettingsRegisteredAfterOpeningAreReadThen)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());
    CProject late;
    late.open(path());
    addSettings<LightElement>(late);
    EXPECT_EQ(settingsOf<LightElement>(late)->number, 7);
    late.save(path());
    auto opened = makeProject();
    opened->open(path());
    EXPECT_EQ(settingsOf<LightElement>(*opened)->number, 7);
}

TEST_F(ProjectFileTest, LateSettingsThatCannotBeReadAreFreshAndLogged)
{
    write(handMade(1, [](CQtArchive& archive) {
        archive.writeUInt(1);
        archive.writeInt(0x201);
        QByteArray nonsense("nonsense");
        archive.value(nonsense);
        archive.writeUInt(0);
    }));
    CProject late;
    late.open(path());
    addSettings<LightElement>(late);
    EXPECT_EQ(settingsOf<LightElement>(late)->number, 0);
    const QStringList lines = LogTrap::take();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_THAT(lines[0].toStdString(), HasSubstr("settings of type 0x201"));
}

TEST_F(ProjectFileTest, SettingsThatAreNotStoredAreNotInTheFile)
{
    auto project = makeProject();
    fill(*project);
    project->save(path());
    auto opened = makeProject();
    settingsOf<CameraElement>(*opened)->number = 5;
    opened->open(path());
    EXPECT_EQ(settingsOf<CameraElement>(*opened)->number, 0);
    CProject other;
    addSettings<CameraElement>(other);
    other.open(path());
    EXPECT_EQ(settingsOf<CameraElement>(other)->number, 0);
}

TEST_F(ProjectFileTest, EveryTruncationIsRefusedAndChangesNothing)
{
    auto source = makeProject();
    fill(*source);
    const QByteArray whole = saved(*source);

    auto project = makeProject();
    addElement<LineElement>(*project, "mine", 1);
    const std::string before = describe(*project);
    CModelElement* const light = project->getProjectSettings(0x201);
    for (int size = 0; size < whole.size(); ++size) {
        write(whole.left(size));
        EXPECT_THAT(refusal(*project, path()), HasSubstr("town.project: ")) << size;
    }
    EXPECT_EQ(describe(*project), before);
    EXPECT_EQ(project->getProjectSettings(0x201), light);
    EXPECT_EQ(project->getPath(), QString());
    EXPECT_EQ(addElement<LineElement>(*project, "next", 1)->getId(), 2);
}

TEST_F(ProjectFileTest, EveryDamagedByteIsRefused)
{
    auto source = makeProject();
    fill(*source);
    const QByteArray whole = saved(*source);
    auto project = makeProject();
    for (int i = 0; i < whole.size(); ++i) {
        QByteArray damaged = whole;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x40);
        write(damaged);
        EXPECT_THAT(refusal(*project, path()), HasSubstr("town.project: ")) << i;
    }
    EXPECT_EQ(describe(*project), "| | 0 0");
}

TEST_F(ProjectFileTest, DamageInsideOneElementIsRefused)
{
    write(handMade(1, [](CQtArchive& archive) {
        archive.writeUInt(0);
        archive.writeUInt(1);
        archive.writeInt(0x101);
        archive.writeUInt(1);
        archive.writeInt64(1);
        PointElement point;
        QByteArray bytes = bytesOf(point);
        bytes.chop(1);
        archive.value(bytes);
    }));
    auto project = makeProject();
    fill(*project);
    EXPECT_THAT(refusal(*project, path()), HasSubstr("town.project: "));
    EXPECT_EQ(describe(*project), "1a10 3c30 | 2b20 | 7 8");
}

TEST_F(ProjectFileTest, IdentifiersOutOfRangeOrDoubledAreRefused)
{
    auto project = makeProject();
    const std::vector<std::pair<LONGID, std::vector<LONGID>>> bad = {
        {1, {0}}, {1, {-5}}, {1, {CProjectModel::largestId() + 1}}, {1, {3, 3}}, {0, {}}, {INT64_MAX, {}}};
    for (const auto& [next, ids] : bad) {
        write(fileWithPoints(next, ids));
        EXPECT_THAT(refusal(*project, path()), HasSubstr("identifier")) << next;
    }
    write(fileWithPoints(1, {CProjectModel::largestId()}));
    project->open(path());
    EXPECT_EQ(addElement<PointElement>(*project, "n", 0)->getId(), CProjectModel::largestId() + 1);
}

TEST_F(ProjectFileTest, CountsThatTheFileCannotHoldAreRefused)
{
    auto project = makeProject();
    const std::vector<std::vector<std::uint32_t>> bad = {
        {0xFFFFFFFFu}, {0, 0x7FFFFFFFu}, {0, 1, 0x101, 0x80000000u}};
    for (const auto& numbers : bad) {
        write(handMade(1, [&](CQtArchive& archive) {
            for (std::uint32_t number : numbers)
                archive.writeUInt(number);
        }));
        EXPECT_THAT(refusal(*project, path()), HasSubstr("count")) << numbers.size();
    }
}

TEST_F(ProjectFileTest, DoubledSettingsAreRefused)
{
    write(handMade(1, [](CQtArchive& archive) {
        LightElement light;
        QByteArray bytes = bytesOf(light);
        archive.writeUInt(2);
        for (int i = 0; i < 2; ++i) {
            archive.writeInt(0x201);
            archive.value(bytes);
        }
        archive.writeUInt(0);
    }));
    auto project = makeProject();
    EXPECT_THAT(refusal(*project, path()), HasSubstr("settings of type 0x201"));
}

TEST_F(ProjectFileTest, AnArchiveOfSomethingElseIsRefused)
{
    write(handMade(
        1, [](CQtArchive&) {}, 0x12345678));
    auto project = makeProject();
    EXPECT_THAT(refusal(*project, path()), HasSubstr("not a project"));
}

TEST_F(ProjectFileTest, FilesThatCannotBeReadAreRefusedByName)
{
    auto project = makeProject();
    EXPECT_THAT(refusal(*project, path("nowhere.project")), HasSubstr("nowhere.project"));
    EXPECT_THAT(refusal(*project, path(".")), HasSubstr("."));
    write("");
    EXPECT_THAT(refusal(*project, path()), HasSubstr("town.project"));
}

TEST_F(ProjectFileTest, FileThatCannotBeWrittenIsRefusedByName)
{
    auto project = makeProject();
    try {
        project->save(path("no/such/folder.project"));
        FAIL() << "saved";
    } catch (const ksp::CFileException& error) {
        EXPECT_EQ(error.code(), ksp::CFileException::Access);
        EXPECT_THAT(error.what(), HasSubstr("folder.project"));
    }
    EXPECT_EQ(project->getPath(), QString());
}

TEST_F(ProjectFileTest, CancelledOpeningChangesNothing)
{
    auto source = makeProject();
    fill(*source);
    source->save(path());
    auto project = makeProject();
    addElement<LineElement>(*project, "mine", 1);

    ksp::StagedProgress before = ksp::StagedProgress::dummy();
    before.cancel();
    EXPECT_THROW(project->open(path(), before), ksp::Canceled);

    // Cancelled by the user in the middle of the elements.
    std::unique_ptr<ksp::StagedProgress> during;
    during = std::make_unique<ksp::StagedProgress>([&](double percentage, const QString&) {
        if (percentage > 20.0) during->cancel();
    });
    EXPECT_THROW(project->open(path(), *during), ksp::Canceled);
    EXPECT_EQ(describe(*project), "| 1mine1 | 0 0");
    EXPECT_EQ(project->getPath(), QString());
}

TEST_F(ProjectFileTest, CancelledSavingLeavesTheOldFile)
{
    auto project = makeProject();
    fill(*project);
    const QByteArray first = saved(*project);
    addElement<LineElement>(*project, "more", 1);
    ksp::StagedProgress progress = ksp::StagedProgress::dummy();
    progress.cancel();
    EXPECT_THROW(project->save(path(), progress), ksp::Canceled);
    EXPECT_EQ(CQtArchive::readFile(path()), first);
}

TEST_F(ProjectFileTest, SavingCancelledAtTheVeryEndLeavesTheOldFile)
{
    auto project = makeProject();
    fill(*project);
    const QByteArray first = saved(*project);
    addElement<LineElement>(*project, "more", 1);
    std::unique_ptr<ksp::StagedProgress> progress;
    progress = std::make_unique<ksp::StagedProgress>([&](double percentage, const QString&) {
        if (percentage >= 90.0) progress->cancel(); // all elements are stored
    });
    EXPECT_THROW(project->save(path(), *progress), ksp::Canceled);
    EXPECT_EQ(CQtArchive::readFile(path()), first);
}

TEST_F(ProjectFileTest, ProgressThatCannotBeShownDoesNotStopOpening)
{
    auto source = makeProject();
    fill(*source);
    source->save(path());
    for (const double from : {0.0, 20.0, 65.0, 100.0}) {
        auto project = makeProject();
        addElement<LineElement>(*project, "mine", 1);
        project->open(path(), ksp::StagedProgress([&](double percentage, const QString&) {
                          if (percentage >= from) throw std::runtime_error("no window");
                      }));
        EXPECT_EQ(describe(*project), "1a10 3c30 | 2b20 | 7 0") << from;
        EXPECT_EQ(project->getPath(), path());
        EXPECT_EQ(LogTrap::take(), QStringList{"Progress is shown no more: no window"});
    }
}

TEST_F(ProjectFileTest, FileThatMemoryCannotHoldIsRefusedByName)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer ends the program where memory does";
#endif
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(qint64(1) << 30)); // sparse
    auto project = makeProject();
    fill(*project);
    rlimit before{};
    getrlimit(RLIMIT_AS, &before);
    QFile pages("/proc/self/statm");
    ASSERT_TRUE(pages.open(QIODevice::ReadOnly));
    const rlim_t used = pages.readAll().split(' ')[0].toULongLong() * 4096;
    const rlimit limit{used + (rlim_t(256) << 20), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    std::string said;
    int code = -1;
    try {
        project->open(path());
    } catch (const ksp::CFileException& error) {
        said = error.what();
        code = error.code();
    } catch (const std::exception& error) {
        said = error.what();
    }
    setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(said, path().toStdString() + ": there is not enough memory");
    EXPECT_EQ(code, ksp::CFileException::Limit);
    EXPECT_EQ(describe(*project), "1a10 3c30 | 2b20 | 7 8");
}

TEST_F(ProjectFileTest, ErrorsKeepTheirCodes)
{
    auto project = makeProject();
    const auto codeOf = [&](const QString& file) {
        try {
            project->open(file);
        } catch (const ksp::CFileException& error) {
            return error.code();
        }
        return -1;
    };
    auto source = makeProject();
    const QByteArray whole = saved(*source);
    EXPECT_EQ(codeOf(path("nowhere.project")), ksp::CFileException::Access);
    write(whole.left(whole.size() - 1));
    EXPECT_EQ(codeOf(path()), ksp::CFileException::Truncated);
    write(whole + "x");
    EXPECT_EQ(codeOf(path()), ksp::CFileException::Damaged);
    QByteArray later = whole;
    later[4] = 2; // the format of the archive
    write(later);
    EXPECT_EQ(codeOf(path()), ksp::CFileException::Version);
    write(handMade(
        1, [](CQtArchive&) {}, 0x12345678));
    EXPECT_EQ(codeOf(path()), ksp::CFileException::Damaged);
}

TEST_F(ProjectFileTest, ErrorsOfElementsAreGenericAndNameTheFile)
{
    class Fussy : public PointElement
    {
    public:
        void serialize(CQtArchive& archive) override
        {
            if (archive.isLoading()) throw ksp::CommonError("not so");
            PointElement::serialize(archive);
        }
    };
    write(fileWithPoints(1, {1}));
    auto project = makeProject();
    project->getModel()->registerCreator(std::make_unique<COrdinaryItemCreator<Fussy>>());
    try {
        project->open(path());
        FAIL() << "opened";
    } catch (const ksp::CFileException& error) {
        EXPECT_EQ(error.code(), ksp::CFileException::Generic);
        EXPECT_EQ(error.text(), path() + ": not so");
    }
}

TEST_F(ProjectFileTest, UnknownElementsPutTheNextIdentifierBehindThem)
{
    write(fileWithPoints(1, {41})); // a next identifier that is too low
    CProject ignorant;
    ignorant.open(path());
    EXPECT_EQ(addElement<LineElement>(ignorant, "n", 0)->getId(), 42);
}

TEST_F(ProjectFileTest, ProjectOfVersionZeroIsRefused)
{
    CQtArchive archive;
    archive.beginObject();
    archive.writeUInt(0x4A504D50);
    archive.writeInt64(1);
    archive.writeUInt(0);
    archive.writeUInt(0);
    archive.finish();
    write(archive.data());
    auto project = makeProject();
    EXPECT_THAT(refusal(*project, path()), HasSubstr("version 0"));
}

TEST_F(ProjectFileTest, WhatANewerWriterAddedToTheProjectIsSkipped)
{
    CQtArchive archive;
    archive.beginObject();
    archive.writeUInt(0x4A504D50);
    archive.writeInt64(17);
    archive.writeUInt(0);
    archive.writeUInt(0);
    archive.endObject(1);
    archive.checkVersion(2);
    archive.writeBlock("something new", 13);
    archive.finish();
    write(archive.data());
    auto project = makeProject();
    project->open(path());
    EXPECT_EQ(addElement<LineElement>(*project, "n", 0)->getId(), 17);
}

TEST_F(ProjectFileTest, ProgressRunsToTheEnd)
{
    auto project = makeProject();
    fill(*project);
    std::vector<double> seen;
    const auto note = [&seen](double percentage, const QString&) { seen.push_back(percentage); };
    project->save(path(), ksp::StagedProgress(note));
    ASSERT_FALSE(seen.empty());
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_DOUBLE_EQ(seen.back(), 100.0);
    seen.clear();
    project->open(path(), ksp::StagedProgress(note));
    ASSERT_GT(seen.size(), 4u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_DOUBLE_EQ(seen.back(), 100.0);
}

TEST_F(ProjectFileTest, ElementThatCannotBeStoredNamesTheFile)
{
    class Stubborn : public PointElement
    {
    public:
        void serialize(CQtArchive&) override { throw ksp::CommonError("not me"); }
    };
    auto project = makeProject();
    project->getModel()->getCreateItemManager(0x101)->addItem(std::make_unique<Stubborn>());
    try {
        project->save(path());
        FAIL() << "saved";
    } catch (const ksp::CFileException& error) {
        EXPECT_THAT(error.what(), HasSubstr("town.project: not me"));
    }
    EXPECT_FALSE(QFile::exists(path()));
}
