#include "KindsOfItems.h"

#include "tests/support/ImageCheck.h"

#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <framework/model/CFilterElement.h>

#include <QtCore/QBitArray>
#include <QtGui/QPainter>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <tuple>

namespace {

/// Selections of random areas against pictures: what is seen against a picture of identifiers, what lies
/// behind too against one picture an item.
class RandomSelectionTest : public SelectionTest
{
protected:
    static constexpr int Width = 200, Height = 152; // halves of whole pixels
    static constexpr int Views = 3;

    /// What one item alone draws in a view.
    struct Trace
    {
        std::vector<int> pixels; ///< those that count, y * Width + x
        bool reachesOut = false; ///< parts of it lie outside of the picture
    };

    void TearDown() override
    {
        scene->makeCurrent();
        m_targets.clear();
        kinds.reset();
        SelectionTest::TearDown();
    }

    PaintContext viewOf(int index)
    {
        PaintContext context = paintContext(Width, Height);
        const double aspect = double(Width) / Height;
        if (index == 0) { // all of it
            context.view =
                glm::mat4(glm::lookAt(glm::dvec3(120, -250, 90), glm::dvec3(0), glm::dvec3(0, 0, 1)));
            context.projection = glm::mat4(glm::perspective(0.8, aspect, 1.0, 1000.0));
        } else if (index == 1) { // from within, much of it behind
            context.view =
                glm::mat4(glm::lookAt(glm::dvec3(10, -20, 5), glm::dvec3(60, 90, -10), glm::dvec3(0, 0, 1)));
            context.projection = glm::mat4(glm::perspective(1.1, aspect, 0.5, 150.0));
        } else { // from above, in parallel, cut off on all sides
            context.view = glm::mat4(glm::lookAt(glm::dvec3(0, 0, 300), glm::dvec3(0), glm::dvec3(0, 1, 0)));
            context.projection =
                glm::mat4(glm::ortho(-70.0 * aspect, 70.0 * aspect, -70.0, 70.0, 220.0, 380.0));
        }
        return context;
    }
    /// A frame of this many pictures' widths and heights around the picture.
    static PaintContext enlarged(PaintContext context, int times)
    {
        context.setViewport(QRect(0, 0, times * Width, times * Height));
        context.projection =
            glm::mat4(glm::scale(glm::dmat4(1.0), glm::dvec3(1.0 / times, 1.0 / times, 1.0)) *
                      glm::dmat4(context.projection));
        return context;
    }

    /// A picture of identifiers; drawing is what draws in the pass.
    template <typename Drawing>
    std::vector<LONGID> idPicture(PaintContext context, Drawing drawing)
    {
        context.drawMode = 1;
        std::unique_ptr<RenderTarget>& kept = m_targets[context.viewportRect.width()];
        if (!kept) kept = std::make_unique<RenderTarget>(*gl, context.viewportRect.size(), 4);
        RenderTarget& target = *kept;
        target.bind();
        target.clear(QColor(0, 0, 0, 0));
        gl->glDisable(GL_BLEND);
        drawing(context);
        gl->glEnable(GL_BLEND);
        const QImage low = target.image(1), high = target.image(2);
        std::vector<LONGID> ids;
        for (int y = 0; y < low.height(); ++y)
            for (int x = 0; x < low.width(); ++x)
                ids.push_back(LONGID(word(low, x, y)) | LONGID(word(high, x, y)) << 32);
        return ids;
    }
    static std::uint32_t word(const QImage& image, int x, int y)
    {
        const uchar* bytes = image.constScanLine(y) + 4 * x;
        return bytes[0] | unsigned(bytes[1]) << 8 | unsigned(bytes[2]) << 16 | unsigned(bytes[3]) << 24;
    }

    /// Whether all vertices lie in the view volume; without any, all corners of the box.
    static bool isInVolume(const DrawnItem& item, const PaintContext& context)
    {
        std::vector<glm::dvec3> points = item.vertices;
        if (points.empty())
            for (const glm::dvec3& corner : item.box.getCorners())
                points.push_back(corner);
        const glm::dmat4 matrix = glm::dmat4(context.projection) * glm::dmat4(context.view);
        return std::all_of(points.begin(), points.end(), [&](const glm::dvec3& point) {
            const glm::dvec4 clip = matrix * glm::dvec4(point, 1.0);
            return std::abs(clip.x) <= clip.w && std::abs(clip.y) <= clip.w && std::abs(clip.z) <= clip.w;
        });
    }

    Trace trace(DrawnItem& item, const PaintContext& context)
    {
        const auto alone = [&item](const PaintContext& pass) {
            item.getDrawer()->draw(pass, [&item](Drawable3dItem* other) { return other == &item; });
        };
        Trace result;
        const std::vector<LONGID> ids = idPicture(context, alone);
        for (std::size_t i = 0; i < ids.size(); ++i)
            if (ids[i] == item.getId()) result.pixels.push_back(int(i));
        if (result.pixels.empty()) return result;
        result.reachesOut = !isInVolume(item, context);
        if (result.reachesOut) return result;
        const std::vector<LONGID> larger = idPicture(enlarged(context, 2), alone);
        for (int y = 0; y < 2 * Height; ++y)
            for (int x = 0; x < 2 * Width; ++x) {
                const bool isInPicture =
                    x >= Width / 2 && x < 3 * Width / 2 && y >= Height / 2 && y < 3 * Height / 2;
                if (!isInPicture && larger[std::size_t(y * 2 * Width + x)] == item.getId())
                    result.reachesOut = true;
            }
        return result;
    }

    /// The pixels of an area, painted here once more.
    static std::vector<bool> pixelsOf(const QPolygonF& polygon)
    {
        QImage painted(Width, Height, QImage::Format_ARGB32);
        painted.fill(polygon.size() > 2 ? Qt::black : Qt::white);
        if (polygon.size() > 2) {
            QPainter painter(&painted);
            painter.setPen(Qt::white);
            painter.setBrush(Qt::white);
            painter.drawPolygon(polygon, Qt::OddEvenFill);
        }
        const QRectF box = polygon.boundingRect();
        std::vector<bool> inside;
        for (int y = 0; y < Height; ++y)
            for (int x = 0; x < Width; ++x)
                inside.push_back(painted.pixelColor(x, y) == QColor(Qt::white) && x + 0.5 >= box.left() &&
                                 x + 0.5 <= box.right() && y + 0.5 >= box.top() && y + 0.5 <= box.bottom());
        return inside;
    }

    /// Rectangles, triangles, concave and self-crossing polygons and lassos, of all sizes, also of a pixel,
    /// of two points, and partly or wholly outside of the picture.
    QPolygonF anyArea()
    {
        const auto rectangle = [](double x, double y, double w, double h) {
            return QPolygonF({{x, y}, {x + w, y}, {x + w, y + h}, {x, y + h}});
        };
        const double x = real(0, Width), y = real(0, Height);
        switch (whole(0, 9)) {
        case 0:
            return rectangle(std::floor(x), std::floor(y), 1, 1);
        case 1:
            return rectangle(std::floor(x), std::floor(y), 20, 20);
        case 2:
            return QPolygonF(QVector<QPointF>{{x, y}, {real(0, Width), real(0, Height)}});
        case 3:
            return rectangle(x, y, real(0, Width), real(0, Height));
        case 4: // reaches far out, or does not reach the picture at all
            return rectangle(real(-3 * Width, 2 * Width), real(-Height, Height), real(0, 3 * Width),
                             real(0, 3 * Height));
        case 5: { // a star that crosses itself
            QPolygonF star;
            const double radius = real(5, Height);
            for (int i = 0; i < 5; ++i)
                star << QPointF(x + radius * std::sin(i * 4 * M_PI / 5),
                                y - radius * std::cos(i * 4 * M_PI / 5));
            return star;
        }
        case 6: { // a lasso
            QPolygonF lasso;
            const double radius = real(10, Height);
            for (int i = 0; i < 200; ++i) {
                const double r = radius * (1.0 + 0.3 * std::sin(i * 0.3)) + real(-1, 1);
                lasso << QPointF(x + r * std::cos(i * M_PI / 100), y + r * std::sin(i * M_PI / 100));
            }
            return lasso;
        }
        case 7:
            return rectangle(0, 0, Width, Height);
        default: {
            QPolygonF polygon;
            for (int i = whole(3, 12); i > 0; --i)
                polygon << QPointF(real(-Width / 4.0, Width * 1.25), real(-Height / 4.0, Height * 1.25));
            return polygon;
        }
        }
    }

    double real(double from, double to) { return std::uniform_real_distribution<double>(from, to)(m_random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    /// The combinations of filters: none, by type, by item, both.
    SelectionOptions options(int filters)
    {
        SelectionOptions chosen;
        if ((filters & 1) != 0) chosen.visibilityFilter = &m_typeFilter;
        if ((filters & 2) != 0)
            chosen.itemFilter = [](Drawable3dItem* item) {
                return item->hostItem() && item->hostItem()->getId() % 3 != 0;
            };
        return chosen;
    }
    bool takesPart(const DrawnItem& item, int filters)
    {
        const bool typeIsIn = (filters & 1) == 0 || item.type() != KindsOfItems::FirstType;
        const bool itemIsIn = (filters & 2) == 0 || item.getId() % 3 != 0;
        return static_cast<const Drawable3dItem&>(item).isVisible() && typeIsIn && itemIsIn;
    }

    void compare(int itemCount, int areaCount)
    {
        kinds = std::make_unique<KindsOfItems>(*scene, *gl, elements, itemCount);
        ASSERT_EQ(scene->modelToSceneTransform(), glm::dmat4(1.0)) << "the vertices are in scene coordinates";
        m_typeFilter.setTypeAccepted(KindsOfItems::FirstType, false);
        std::vector<std::vector<Trace>> traces(Views);
        for (int view = 0; view < Views; ++view)
            for (DrawnItem* item : kinds->items())
                traces[std::size_t(view)].push_back(trace(*item, viewOf(view)));
        expectEveryKind(traces.front());
        std::map<std::pair<int, int>, std::vector<LONGID>> pictures;

        std::size_t found = 0, differing = 0;
        for (int area = 0; area < areaCount; ++area) {
            const int view = whole(0, Views - 1), filters = whole(0, 3);
            const QPolygonF polygon = anyArea();
            const std::vector<bool> inside = pixelsOf(polygon);
            const PaintContext context = viewOf(view);
            SelectionOptions chosen = options(filters);

            Ids touched, held;
            for (std::size_t i = 0; i < kinds->items().size(); ++i) {
                const DrawnItem& item = *kinds->items()[i];
                const Trace& seen = traces[std::size_t(view)][i];
                if (!takesPart(item, filters)) continue;
                const auto count = std::count_if(seen.pixels.begin(), seen.pixels.end(),
                                                 [&](int pixel) { return inside[std::size_t(pixel)]; });
                if (count == 0) continue;
                touched.insert(item.getId());
                if (std::size_t(count) == seen.pixels.size() && !seen.reachesOut) held.insert(item.getId());
            }
            std::vector<LONGID>& picture = pictures[{view, filters}];
            if (picture.empty())
                picture = idPicture(context, [&](const PaintContext& pass) {
                    scene->drawFrame(pass, chosen.visibilityFilter, chosen.itemFilter);
                });
            Ids seen, seenAndHeld;
            for (std::size_t i = 0; i < picture.size(); ++i)
                if (inside[i] && picture[i] != 0) seen.insert(picture[i]);
            std::set_intersection(seen.begin(), seen.end(), held.begin(), held.end(),
                                  std::inserter(seenAndHeld, seenAndHeld.end()));

            const struct
            {
                SelectionMode mode;
                SelectionRule rule;
                const Ids& expected;
            } cases[] = {{Through, Touching, touched},
                         {Through, Inside, held},
                         {Visible, Touching, seen},
                         {Visible, Inside, seenAndHeld}};
            for (const auto& each : cases) {
                chosen.mode = each.mode;
                chosen.rule = each.rule;
                const Ids selected = once(scene->selectItems(context, polygon, chosen));
                found += selected.size();
                if (selected == each.expected) continue;
                ++differing;
                std::vector<LONGID> more, fewer;
                std::set_difference(selected.begin(), selected.end(), each.expected.begin(),
                                    each.expected.end(), std::back_inserter(more));
                std::set_difference(each.expected.begin(), each.expected.end(), selected.begin(),
                                    selected.end(), std::back_inserter(fewer));
                ADD_FAILURE() << "area " << area << ", view " << view << ", filters " << filters << ", mode "
                              << int(each.mode) << ", rule " << int(each.rule) << ": " << more.size()
                              << " too many (" << describe(more) << "), " << fewer.size() << " missing ("
                              << describe(fewer) << ")";
            }
        }
        std::printf("%d areas over %d items, 4 ways each: %zu items selected, %zu sets differ\n", areaCount,
                    itemCount, found, differing);
        EXPECT_GT(found, std::size_t(itemCount));
    }
    /// Every kind draws something, or the comparison says nothing about it.
    void expectEveryKind(const std::vector<Trace>& traces)
    {
        std::map<int, std::size_t> pixels;
        for (std::size_t i = 0; i < traces.size(); ++i)
            pixels[KindsOfItems::kindOf(i)] += traces[i].pixels.size();
        for (int kind = 0; kind < KindsOfItems::KindCount; ++kind)
            EXPECT_GT(pixels[kind], 20u) << "kind " << kind;
        saveTestImage("selection_kinds", drawFrame(viewOf(0)));
    }
    std::string describe(const std::vector<LONGID>& ids) const
    {
        std::string text;
        for (const LONGID id : ids)
            text += " kind " + std::to_string(((id & 0xFFFFFFFF) - 1) % KindsOfItems::KindCount);
        return text;
    }

    std::vector<std::unique_ptr<TestElement>> elements;
    std::unique_ptr<KindsOfItems> kinds;

private:
    std::mt19937 m_random{5};
    std::map<int, std::unique_ptr<RenderTarget>> m_targets; // by width
    CFilterElement m_typeFilter;
};

TEST_F(RandomSelectionTest, SetsAreThoseOfThePictures)
{
    compare(120, 60);
}

TEST_F(RandomSelectionTest, DISABLED_ThreeHundredAreasOverAThousandItems)
{
    compare(1000, 300);
}

} // namespace
