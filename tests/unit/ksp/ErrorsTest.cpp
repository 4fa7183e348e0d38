#include <framework/ksp/CFileException.h>
#include <framework/ksp/CGuardedObject.h>
#include <framework/ksp/CTranslater.h>
#include <framework/ksp/Canceled.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTranslator>
#include <gtest/gtest.h>

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
