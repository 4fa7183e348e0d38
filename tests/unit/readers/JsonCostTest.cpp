#include "ReadCost.h"
#include "ReaderTest.h"

#include <framework/ksp/CommonError.h>
#include <readers/cityjson/readCityJson.h>
#include <readers/geojson/readGeoJson.h>

#include <QtCore/QFileInfo>

#include <functional>

// Text made to cost far more than its size: read or refused, in a tenth of a second a megabyte and a small
// multiple of its size.

namespace {

int fileSize = 0; // of the text that is made

struct CostlyText
{
    const char* name;
    QByteArray (*make)();
    /// What the refusal holds; null: the file is read.
    const char* refusal;
    double times = 8.0; ///< of its size that reading may take
    int megabytes = 2;
};

std::ostream& operator<<(std::ostream& stream, const CostlyText& sample)
{
    return stream << sample.name;
}

// The pieces one after the other, up to the size.
QByteArray filled(const QByteArray& front, const QByteArray& piece, const QByteArray& back)
{
    return front + piece.repeated((fileSize - front.size() - back.size()) / piece.size()) + back;
}

// Members with names of their own, "a0":VALUE and so on.
QByteArray members(int count, const QByteArray& value)
{
    QByteArray text;
    text.reserve(fileSize + fileSize / 2);
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "\"a" : ",\"a") + QByteArray::number(i) + "\":" + value;
    return text;
}

// Texts that are no file of any format; reason: why what is valid JSON is refused.
std::vector<CostlyText> texts(const char* reason)
{
    constexpr const char* notValid = "is not valid JSON at byte ";
    return {
        {"deep_arrays", [] { return filled("", "[", ""); }, notValid},
        {"deep_objects", [] { return filled("", "{\"a\":", ""); }, notValid},
        {"zeros", [] { return filled("[", "0,", "0]"); }, reason},
        {"empty_objects", [] { return filled("[", "{},", "0]"); }, reason},
        {"empty_arrays", [] { return filled("[", "[],", "0]"); }, reason},
        {"empty_strings", [] { return filled("[", "\"\",", "0]"); }, reason},
        {"members", [] { return "{" + members(fileSize / 11, "0") + "}"; }, ": "},
        {"one_key", [] { return filled("{", "\"a\":0,", "\"a\":0}"); }, ": "},
        {"one_string", [] { return filled("[\"", "x", "\"]"); }, reason},
        {"open_string", [] { return filled("[\"", "x", ""); }, notValid},
        // the library tells what it read of a string that is wrong, several times over
        {"broken_string", [] { return filled("[\"", "x", "\n\"]"); }, notValid, 10.0},
        {"escapes", [] { return filled("[\"", "\\n", "\"]"); }, reason},
        {"unicode_escapes", [] { return filled("[\"", "\\u20ac", "\"]"); }, reason},
        {"digits", [] { return filled("[", "1", "]"); }, notValid},
        {"decimals", [] { return filled("[0.", "1", "]"); }, notValid},
        {"blanks", [] { return filled("[", " ", "]"); }, reason},
    };
}

const QByteArray pointGeometry = R"({"type":"Point","coordinates":[1,2]})";

QByteArray featureWith(const QByteArray& properties)
{
    return R"({"type":"Feature","geometry":)" + pointGeometry + R"(,"properties":{)" + properties + "}}";
}

// A line after a million and more of others.
QByteArray coordinates(const char* type, const QByteArray& piece, const QByteArray& last)
{
    return filled(QByteArray(R"({"type":")") + type + R"(","coordinates":[)", piece, last + "]}");
}

QByteArray features(const QByteArray& piece)
{
    return filled(R"({"type":"FeatureCollection","features":[)", piece, featureWith("") + "]}");
}

QByteArray property(const QByteArray& front, const QByteArray& piece, const QByteArray& back)
{
    const QByteArray whole = featureWith("\"a\":" + front + "@" + back);
    const int place = whole.indexOf('@');
    return filled(whole.left(place), piece, whole.mid(place + 1));
}

std::vector<CostlyText> geoJson()
{
    return {
        // a file of 2 MB may take so much
        {"positions", [] { return coordinates("MultiPoint", "[0,0],", "[1,1]"); }, "of its size", 8.0, 10},
        {"line", [] { return coordinates("LineString", "[0,0],", "[1,1]"); }, "of its size", 8.0, 10},
        {"short_lines", [] { return coordinates("MultiLineString", "[[0,0],[1,1]],", "[[0,0],[1,1]]"); },
         "of its size"},
        {"empty_lines", [] { return coordinates("MultiLineString", "[],", "[[0,0],[1,1]]"); }, nullptr},
        {"numbers_as_positions", [] { return coordinates("MultiPoint", "0,", "[1,1]"); }, "lacks a list"},
        {"long_position", [] { return coordinates("Point", "0,", "0"); }, nullptr},
        {"deep_coordinates", [] { return coordinates("Point", "[", ""); }, "not valid JSON"},
        {"objects_as_coordinates", [] { return coordinates("Point", "{},", "1"); },
         "a coordinate is no number"},
        {"geometries",
         [] {
             return filled(R"({"type":"GeometryCollection","geometries":[)",
                           R"({"type":"MultiPoint","coordinates":[]},)", pointGeometry + "]}");
         },
         nullptr},
        {"point_geometries",
         [] {
             return filled(R"({"type":"GeometryCollection","geometries":[)", pointGeometry + ",",
                           pointGeometry + "]}");
         },
         nullptr},
        {"bare_features", [] { return features(R"({"type":"Feature"},)"); }, nullptr},
        {"no_features", [] { return features("{},"); }, "it is no feature"},
        {"many_properties", [] { return featureWith(members(fileSize / 11, "0")); },
         "more than 65536 properties"},
        {"one_property_again", [] { return filled(featureWith("").chopped(2), "\"a\":0,", "\"a\":0}}"); },
         "more than 65536 properties"},
        {"properties_of_other_names",
         [] {
             QByteArray all = featureWith("");
             for (int i = 0; all.size() < fileSize; ++i) {
                 QByteArray some = "\"b\":0";
                 for (int k = 0; k < 1000; ++k)
                     some += ",\"" + QByteArray::number(i * 1000 + k, 36) + "\":\"c\"";
                 all += "," + featureWith(some);
             }
             return R"({"type":"FeatureCollection","features":[)" + all + "]}";
         },
         "of its size"},
        {"list_property", [] { return property("[", "0,", "0]"); }, nullptr},
        {"objects_property", [] { return property("[", "{},", "0]"); }, nullptr},
        {"small_list_properties",
         [] {
             return filled(R"({"type":"FeatureCollection","features":[)",
                           R"({"type":"Feature","properties":{"a":[{},{},{},{},{},{},{},{}]}},)",
                           featureWith("") + "]}");
         },
         "of its size"},
        {"string_property", [] { return property("\"", "x", "\""); }, nullptr},
        {"escaped_property", [] { return property("\"", "\\n", "\""); }, nullptr},
        {"long_type", [] { return filled("{\"type\":\"", "x", "\"}"); }, "is not a type"},
        {"long_key", [] { return filled("{\"", "x", "\":1}"); }, "is not a type"},
        {"town",
         [] {
             return features(
                 R"({"type":"Feature","id":17,"geometry":{"type":"Polygon","coordinates":[[)"
                 R"([612130.25,5070858.5],[612142,5070858.5],[612142,5070870.75],[612130.25,5070858.5]]]},)"
                 R"("properties":{"name":"Mill Lane 4","floors":2,"roof":"gable","tags":["a","b"]}},)");
         },
         nullptr, 8.0, 10},
        {"points",
         [] {
             return features(R"({"type":"Feature","geometry":{"type":"Point","coordinates":[7.12,46.31]},)"
                             R"("properties":{"n":1}},)");
         },
         nullptr},
        {"foreign_members",
         [] { return filled(pointGeometry.chopped(1) + R"(,"other":[)", R"({"a":[1,"b"]},)", "0]}"); },
         nullptr},
    };
}

// What precedes a list or member of the root.
QByteArray gltfDocument(const QByteArray& front, const QByteArray& piece, const QByteArray& back)
{
    return filled(R"({"asset":{"version":"2.0"},)" + front, piece, back + "}");
}

std::vector<CostlyText> gltf()
{
    return {
        {"assembly",
         [] {
             const auto list = [](const char* name, const QByteArray& member) {
                 return ",\"" + QByteArray(name) + "\":[" + (member + ",").repeated(fileSize / 312) + member +
                        "]";
             };
             return R"({"asset":{"version":"2.0"},"buffers":[{"byteLength":36,"uri":"data:;base64,)" +
                    QByteArray(36, '\0').toBase64() + "\"}]" +
                    list("nodes", R"({"mesh":0,"name":"bolt","translation":[12.5,-3.25,0.125]})") +
                    list("meshes", R"({"primitives":[{"attributes":{"POSITION":0},"material":0}]})") +
                    list("materials", "{}") +
                    list("accessors", R"({"bufferView":0,"componentType":5126,"count":3,"type":"VEC3",)"
                                      R"("max":[1.5,1.5,1.5],"min":[-1.5,-1.5,-1.5]})") +
                    list("bufferViews", R"({"buffer":0,"byteLength":36,"byteOffset":0,"target":34962})") +
                    "}";
         },
         nullptr},
        {"nodes", [] { return gltfDocument("\"nodes\":[", "{},", "{}]"); }, "of its size"},
        {"zeros_as_nodes", [] { return gltfDocument("\"nodes\":[", "0,", "0]"); }, "is no object"},
        {"nodes_of_empty_meshes",
         [] { return gltfDocument(R"("meshes":[{}],"nodes":[)", R"({"mesh":0},)", "{}]"); }, "of its size"},
        {"nodes_in_a_scene", [] { return gltfDocument(R"("scenes":[{"nodes":[)", "0,", "0]}]"); },
         "of its size"},
        {"children", [] { return gltfDocument(R"("nodes":[{"children":[)", "0,", "0]}]"); }, "of its size"},
        {"primitives",
         [] { return gltfDocument(R"("nodes":[{"mesh":0}],"meshes":[{"primitives":[)", "{},", "{}]}]"); },
         "of its size"},
        {"attributes",
         [] {
             return R"({"asset":{"version":"2.0"},"nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{)" +
                    members(fileSize / 11, "0") + "}}]}]}";
         },
         // a map's entry each, in a heap that may be in pieces: 11 to 13 times its size
         "nothing to draw", 12.0},
        {"accessors", [] { return gltfDocument("\"accessors\":[", "{},", "{}]"); }, "of its size"},
        {"scenes", [] { return gltfDocument("\"scenes\":[", "{},", "{}]"); }, "of its size"},
        {"extras", [] { return gltfDocument("\"extras\":[", "{},", "{}]"); }, "nothing to draw"},
        {"deep_extras", [] { return gltfDocument("\"extras\":", "[", ""); }, "not valid JSON"},
        {"extensions", [] { return gltfDocument("\"extensionsRequired\":[", "{},", "{}]"); }, "of its size"},
        {"long_name", [] { return gltfDocument("\"nodes\":[{\"name\":\"", "x", "\"}]"); }, "nothing to draw"},
        {"data",
         [] {
             return gltfDocument(
                 R"("nodes":[{"mesh":0}],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],"accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3"}],"bufferViews":[{"buffer":0,"byteLength":48}],"buffers":[{"byteLength":48,"uri":"data:;base64,)",
                 "AAAA", "\"}]");
         },
         nullptr},
    };
}

QByteArray cityDocument(const QByteArray& objects, const QByteArray& piece, const QByteArray& back)
{
    return filled(
        R"({"type":"CityJSON","version":"2.0","vertices":[[0,0,0],[1,0,0],[1,1,0],[0,1,0]],"CityObjects":{)" +
            objects,
        piece, back + "}}");
}

QByteArray cityGeometry(const char* type, const QByteArray& piece, const QByteArray& back)
{
    return cityDocument(R"("a":{"type":"Road","geometry":[{"lod":"1","type":")" + QByteArray(type) +
                            R"(","boundaries":[)",
                        piece, back + "]}]}");
}

std::vector<CostlyText> cityJson()
{
    return {
        {"points", [] { return cityGeometry("MultiPoint", "0,", "0"); }, nullptr},
        {"empty_surfaces", [] { return cityGeometry("MultiSurface", "[],", "[]"); }, nullptr},
        {"empty_rings", [] { return cityGeometry("MultiSurface", "[[]],", "[[]]"); }, nullptr},
        {"triangles", [] { return cityGeometry("MultiSurface", "[[0,1,2]],", "[[0,1,2]]"); }, nullptr, 10.0},
        {"objects_as_indices", [] { return cityGeometry("MultiPoint", "{},", "0"); }, "something else"},
        {"bare_objects",
         [] {
             return R"({"type":"CityJSON","version":"2.0","vertices":[],"CityObjects":{)" +
                    members(fileSize / 20, R"({"type":"X"})") + "}}";
         },
         "of its size"},
        {"one_object_again",
         [] { return cityDocument("", R"("a":{"type":"Road"},)", R"("a":{"type":"Road"})"); }, "of its size"},
        {"parents", [] { return cityDocument(R"("a":{"type":"Road","parents":[)", "\"a\",", "\"a\"]}"); },
         "of its size"},
        {"kinds",
         [] {
             return cityDocument(
                 R"("a":{"type":"Road","geometry":[{"type":"MultiPoint","boundaries":[],"semantics":{"surfaces":[)",
                 "{},", "{}]}}]}");
         },
         nullptr, 8.0, 10},
        {"vertices",
         [] {
             return filled(R"({"type":"CityJSON","version":"2.0","CityObjects":{},"vertices":[)", "[0,0,0],",
                           "[1,1,1]]}");
         },
         nullptr},
        {"texts", [] { return filled("", "{}", "{}"); }, "lacks"},
    };
}

class JsonCost : public ReaderTest, public ::testing::WithParamInterface<CostlyText>
{
protected:
    void check(const char* extension, const std::function<void(const QString& path)>& read) const
    {
        fileSize = 1'000'000 * GetParam().megabytes;
        const QString path = write(QString("file.") + extension, GetParam().make());
        const auto size = static_cast<double>(QFileInfo(path).size());
        ASSERT_GT(size, 0.9 * fileSize);
        const ReadCost cost = costOf([&] { read(path); });
        RecordProperty("milliseconds", static_cast<int>(1e3 * cost.seconds));
        RecordProperty("kilobytes", static_cast<int>(1e-3 * cost.memory));
        RecordProperty("refusal", cost.refusal.mid(path.size()).toStdString());
        if (GetParam().refusal) {
            EXPECT_TRUE(cost.refusal.startsWith(path + ": ")) << qPrintable(cost.refusal);
            EXPECT_TRUE(cost.refusal.contains(GetParam().refusal)) << qPrintable(cost.refusal);
            EXPECT_LT(cost.refusal.size(), path.size() + 200);
        } else {
            EXPECT_EQ(cost.refusal, "");
        }
        if (!canMeasure()) return;
        EXPECT_GT(cost.memory, 0.5 * size) << "this measures nothing";
        // What any file may take beyond its size, with pages of the program's own and of the heap, which
        // depend on what ran before; a file that is refused for what it would take has taken it by then.
        const bool isTooDear = cost.refusal.contains("of its size");
        EXPECT_LT(cost.memory, GetParam().times * size + (isTooDear ? 16e6 : 12e6))
            << cost.memory / size << " times";
        EXPECT_LT(cost.seconds, 0.1 + 0.1e-6 * size);
    }
};

class GeoJsonCost : public JsonCost
{
};

class GltfCost : public JsonCost
{
};

class CityJsonCost : public JsonCost
{
};

std::string nameOf(const ::testing::TestParamInfo<CostlyText>& sample)
{
    return sample.param.name;
}

INSTANTIATE_TEST_SUITE_P(Texts, GeoJsonCost, ::testing::ValuesIn(texts("is not GeoJSON")), nameOf);
INSTANTIATE_TEST_SUITE_P(Files, GeoJsonCost, ::testing::ValuesIn(geoJson()), nameOf);
INSTANTIATE_TEST_SUITE_P(Texts, GltfCost, ::testing::ValuesIn(texts("is not a glTF file")), nameOf);
INSTANTIATE_TEST_SUITE_P(Files, GltfCost, ::testing::ValuesIn(gltf()), nameOf);
INSTANTIATE_TEST_SUITE_P(Files, CityJsonCost, ::testing::ValuesIn(cityJson()), nameOf);

} // namespace

TEST_P(GeoJsonCost, IsATenthOfASecondAMegabyteAndASmallMultipleOfTheSize)
{
    check("geojson", [](const QString& path) { readers::readGeoJson(path, ksp::StagedProgress::dummy()); });
}

TEST_P(GltfCost, IsATenthOfASecondAMegabyteAndASmallMultipleOfTheSize)
{
    check("gltf", [](const QString& path) {
        readers::readMeshFile(path, parserOf("gltf"), ksp::StagedProgress::dummy());
    });
}

TEST_P(CityJsonCost, IsATenthOfASecondAMegabyteAndASmallMultipleOfTheSize)
{
    check("city.json",
          [](const QString& path) { readers::readCityJson(path, {}, ksp::StagedProgress::dummy()); });
}
