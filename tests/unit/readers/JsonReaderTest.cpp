#include <framework/ksp/Canceled.h>
#include <framework/ksp/CommonError.h>
#include <readers/common/JsonReader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QStringList>

#include <cmath>
#include <limits>

namespace {

// Writes down what it is told.
class Recorder : public readers::JsonHandler
{
public:
    explicit Recorder(const readers::JsonReader& reader)
        : m_reader(reader)
    {
    }

    QStringList words;
    std::vector<double> numbers;
    std::vector<int> offsets; ///< of brackets

private:
    void onNull() override { words << "null"; }
    void onBoolean(bool value) override { words << (value ? "true" : "false"); }
    void onInteger(std::int64_t value) override { words << QString::number(value); }
    void onNumber(double value) override
    {
        words << "number";
        numbers.push_back(value);
    }
    void onString(std::string& text) override { words << '"' + QString::fromStdString(text) + '"'; }
    void onObject() override { addBracket("{"); }
    void onKey(std::string& name) override { words << QString::fromStdString(name) + ':'; }
    void onObjectEnd() override { addBracket("}"); }
    void onArray() override { addBracket("["); }
    void onArrayEnd() override { addBracket("]"); }

    void addBracket(const char* bracket)
    {
        words << bracket;
        offsets.push_back(m_reader.getOffset());
    }

    const readers::JsonReader& m_reader;
};

Recorder recorded(const QByteArray& text)
{
    readers::JsonReader reader(text, ksp::StagedProgress::dummy());
    Recorder recorder(reader);
    reader.read(recorder);
    return recorder;
}

QString wordsOf(const QByteArray& text)
{
    return recorded(text).words.join(' ');
}

std::string jsonRefusal(const QByteArray& text)
{
    try {
        recorded(text);
    } catch (const ksp::CommonError& error) {
        return error.what();
    }
    return "was read";
}

QByteArray nested(int depth)
{
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}

} // namespace

TEST(JsonReader, TellsWhatStandsInTheTextInItsOrder)
{
    EXPECT_EQ(wordsOf(R"({"b":[null,true,false,-7,"x"],"a":{"c":1},"b":2})"),
              R"({ b: [ null true false -7 "x" ] a: { c: 1 } b: 2 })");
    EXPECT_EQ(wordsOf(" [ ] \n"), "[ ]");
}

TEST(JsonReader, TellsWhereBracketsStand)
{
    EXPECT_EQ(recorded(R"({"a":[1, {}], "b":12 })").offsets, (std::vector<int>{1, 6, 10, 11, 12, 22}));
    EXPECT_EQ(recorded("\xef\xbb\xbf[]").offsets, (std::vector<int>{4, 5}));
}

TEST(JsonReader, NumbersAreTheNearestDoubles)
{
    const std::vector<double> numbers =
        recorded("[0.1,2700000.123,1e23,2.2250738585072011e-308,4.9e-324,1e-999,-0.0,"
                 "9223372036854775808,1.7976931348623157e308,3.0]")
            .numbers;
    EXPECT_EQ(numbers, (std::vector<double>{0.1, 2700000.123, 1e23, 2.2250738585072011e-308, 4.9e-324, 0.0,
                                            -0.0, 9223372036854775808.0, 1.7976931348623157e308, 3.0}));
    EXPECT_TRUE(std::signbit(numbers.at(6)));
}

TEST(JsonReader, WholeNumbersOfAllBitsStayWhole)
{
    EXPECT_EQ(wordsOf("[9007199254740993,9223372036854775807,-9223372036854775808]"),
              "[ 9007199254740993 9223372036854775807 -9223372036854775808 ]");
}

TEST(JsonReader, TextsAreInUtf8WithTheirEscapesResolved)
{
    EXPECT_EQ(wordsOf(R"(["a\"\\\/\n\u20ac\ud83d\ude00)"
                      "\xc3\xa9"
                      R"("])"),
              QString::fromUtf8("[ \"a\"\\/\n\xe2\x82\xac\xf0\x9f\x98\x80\xc3\xa9\" ]"));
}

TEST(JsonReader, WhatIsNoJsonIsRefusedWithItsPlace)
{
    EXPECT_EQ(jsonRefusal("{\"a\":nope}"), "is not valid JSON at byte 7: invalid literal");
    EXPECT_EQ(jsonRefusal("[1,]"),
              "is not valid JSON at byte 4: unexpected ']'; expected '[', '{', or a literal");
    for (const char* text :
         {"[NaN]",     "[nan]",         "[Infinity]", "[-]",        "[+1]",     "[01]",  "[.5]", "[1.]",
          "[0x10]",    "['a']",         "[1 2]",      "{1:2}",      "{\"a\"}",  "[] []", "[]]",  "[\"\t\"]",
          "[\"\\x\"]", "[\"\\ud800\"]", "[\"\xff\"]", "[\"\xc3\"]", "// a\n[]", "[]\xff"})
        EXPECT_THAT(jsonRefusal(text), ::testing::StartsWith("is not valid JSON at byte ")) << text;
}

TEST(JsonReader, OnlyObjectsAndListsAreTexts)
{
    for (const char* text : {"", "  ", "7", "\"a\"", "null", "nonsense", "\xef\xbb\xbf"})
        EXPECT_THAT(jsonRefusal(text), ::testing::EndsWith(": there is no object and no list")) << text;
}

TEST(JsonReader, TextsThatEndTooEarlyAreRefused)
{
    const QByteArray text = R"({"a":[1.5,"b\n",{"c":null}],"d":true} )";
    for (int size = 1; size < text.size() - 1; ++size)
        EXPECT_EQ(jsonRefusal(text.left(size)),
                  "is not valid JSON at byte " + std::to_string(size) + ": it ends too early");
    EXPECT_EQ(jsonRefusal(text), "was read");
}

TEST(JsonReader, NumbersBeyondADoubleAreRefused)
{
    EXPECT_EQ(jsonRefusal("[1e999]"), "is not valid JSON at byte 6: a number is too large");
    EXPECT_EQ(jsonRefusal("[-1e999]"), "is not valid JSON at byte 7: a number is too large");
    EXPECT_THAT(jsonRefusal("[0." + QByteArray(200'000, '1') + "]"),
                ::testing::HasSubstr("a number of more than"));
}

TEST(JsonReader, LongBlanksAndTextsAreNoLongNumbers)
{
    EXPECT_EQ(wordsOf("[" + QByteArray(1'000'000, ' ') + "1]"), "[ 1 ]");
    EXPECT_EQ(recorded("[\"" + QByteArray(1'000'000, '1') + "\"]").words.at(1).size(), 1'000'002);
    EXPECT_EQ(recorded("{\"" + QByteArray(1'000'000, '1') + "\":1}").words.at(1).size(), 1'000'001);
}

TEST(JsonReader, NestsAsDeepAsItSays)
{
    constexpr int deepest = readers::JsonReader::deepest;
    EXPECT_EQ(jsonRefusal(nested(deepest)), "was read");
    EXPECT_EQ(jsonRefusal(nested(deepest + 1)), "is not valid JSON at byte " + std::to_string(deepest + 1) +
                                                    ": lists or objects nest too deeply");
    EXPECT_EQ(jsonRefusal("[" + (nested(deepest - 1) + ",").repeated(3) + "0]"), "was read");
}

TEST(JsonReader, ProgressIsThatOfTheBytes)
{
    std::vector<double> shown;
    const ksp::StagedProgress progress(
        [&](double percentage, const QString&) { shown.push_back(percentage); });
    readers::JsonReader reader("[\"" + QByteArray(1'000'000, 'x') + "\"]", progress);
    Recorder recorder(reader);
    reader.read(recorder);
    EXPECT_GT(shown.size(), 10u); // within the one text, too
    EXPECT_TRUE(std::is_sorted(shown.begin(), shown.end()));
    EXPECT_EQ(shown.back(), 100.0);
}

TEST(JsonReader, CancelIsObeyedWithinALongText)
{
    std::shared_ptr<ksp::StagedProgress> handle;
    handle = std::make_shared<ksp::StagedProgress>([&](double percentage, const QString&) {
        if (percentage > 50.0) handle->cancel();
    });
    readers::JsonReader reader("[\"" + QByteArray(1'000'000, 'x') + "\"]", *handle);
    Recorder recorder(reader);
    EXPECT_THROW(reader.read(recorder), ksp::Canceled);
    EXPECT_EQ(recorder.words, QStringList("["));
}
