#include <framework/ksp/CFileException.h>
#include <framework/ksp/CGuardedObject.h>
#include <framework/ksp/CTranslater.h>
#include <framework/ksp/Canceled.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTranslator>
#include <gtest/gtest.h>

#include <vector>

TEST(Errors, textAndWhatAreTheSame)
{
    const QString text = QString::fromUtf8("Datei nicht lesbar: дом");
    const ksp::CommonError error(text);
    EXPECT_EQ(error.text(), text);
    EXPECT_STREQ(error.what(), text.toUtf8().constData());
}

TEST(Errors, fileExceptionCarriesItsCode)
{
    try {
        throw ksp::CFileException(ksp::CFileException::Truncated, "cut");
    } catch (const ksp::CommonError& error) {
        EXPECT_EQ(dynamic_cast<const ksp::CFileException&>(error).code(), 2);
        EXPECT_EQ(error.text(), "cut");
    }
    EXPECT_EQ(int(ksp::CFileException::Limit), 1);
}

TEST(Errors, canceledIsACommonError)
{
    EXPECT_THROW(throw ksp::Canceled(), ksp::CommonError);
}

TEST(GuardedPtr, readsNullOnceTheObjectIsGone)
{
    auto object = std::make_unique<ksp::CGuardedObject>();
    ksp::GuardedPtr<ksp::CGuardedObject> pointer(object.get());
    EXPECT_EQ(pointer.get(), object.get());
    object.reset();
    EXPECT_EQ(pointer.get(), nullptr);
    EXPECT_FALSE(pointer);
}

TEST(GuardedPtr, copyOfTheObjectHasWatchersOfItsOwn)
{
    auto object = std::make_unique<ksp::CGuardedObject>();
    ksp::CGuardedObject copy(*object);
    ksp::GuardedPtr<ksp::CGuardedObject> pointer(&copy);
    object.reset();
    EXPECT_EQ(pointer.get(), &copy);
}

TEST(GuardedPtr, copiesAndMovesWatchTheSameObject)
{
    auto object = std::make_unique<ksp::CGuardedObject>();
    ksp::CGuardedObject other;
    ksp::GuardedPtr<ksp::CGuardedObject> first(object.get()), second(&other), third;
    EXPECT_EQ(third.get(), nullptr);
    second = first;
    third = std::move(first);
    EXPECT_EQ(second.get(), object.get());
    EXPECT_EQ(third.get(), object.get());
    EXPECT_EQ(first.get(), nullptr);
    second = second;
    EXPECT_EQ(second.get(), object.get());
    third = nullptr;
    object.reset();
    EXPECT_EQ(second.get(), nullptr);
    second = &other;
    EXPECT_EQ(second.get(), &other);
}

TEST(GuardedPtr, theOnlyWatcherMayMoveAndGo)
{
    auto object = std::make_unique<ksp::CGuardedObject>();
    std::vector<ksp::GuardedPtr<ksp::CGuardedObject>> pointers;
    pointers.emplace_back(object.get());
    pointers.reserve(pointers.capacity() + 1); // moves it
    EXPECT_EQ(pointers.front().get(), object.get());
    pointers.clear();
    pointers.emplace_back(object.get());
    auto moved = std::move(pointers.front());
    pointers.clear();
    EXPECT_EQ(moved.get(), object.get());
    object.reset();
    EXPECT_EQ(moved.get(), nullptr);
}

TEST(GuardedPtr, aSecondWatcherLeavesTheFirstOneWhatItHas)
{
    auto object = std::make_unique<ksp::CGuardedObject>();
    const ksp::GuardedPtr<ksp::CGuardedObject> first(object.get());
    {
        const ksp::GuardedPtr<ksp::CGuardedObject> second(object.get()), third(first);
        EXPECT_EQ(first.get(), object.get());
        EXPECT_EQ(second.get(), object.get());
        EXPECT_EQ(third.get(), object.get());
    }
    EXPECT_EQ(first.get(), object.get());
    ksp::GuardedPtr<ksp::CGuardedObject> fourth(first);
    object.reset();
    EXPECT_EQ(first.get(), nullptr);
    EXPECT_EQ(fourth.get(), nullptr);
    const ksp::GuardedPtr<ksp::CGuardedObject> ofNothing(fourth);
    EXPECT_FALSE(ofNothing);
}

TEST(GuardedPtr, watchersThatTakeOverLeaveWhatTheyHad)
{
    auto a = std::make_unique<ksp::CGuardedObject>(), b = std::make_unique<ksp::CGuardedObject>();
    ksp::GuardedPtr<ksp::CGuardedObject> first(a.get()), second(b.get());
    first = std::move(second);
    EXPECT_EQ(second.get(), nullptr);
    a.reset(); // nobody watches it any more
    EXPECT_EQ(first.get(), b.get());
    second = first.get();
    first = nullptr;
    EXPECT_EQ(second.get(), b.get());
    b.reset();
    EXPECT_EQ(second.get(), nullptr);
}

TEST(Translater, textStaysWithoutATranslation)
{
    EXPECT_EQ(CTranslater::GetInstance().translate("Scene", "Größe"), QString::fromUtf8("Größe"));
    EXPECT_EQ(CTranslater::GetInstance().translate("Scene", nullptr), QString());
}

namespace {

struct UpperCase : QTranslator
{
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return qstrcmp(context, "Scene") == 0 ? QString::fromUtf8(text).toUpper() : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

TEST(Translater, asksTheInstalledTranslators)
{
    UpperCase translator;
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(CTranslater::GetInstance().translate("Scene", "wall"), "WALL");
    EXPECT_EQ(CTranslater::GetInstance().translate("Other", "wall"), "wall");
    QCoreApplication::removeTranslator(&translator);
}
