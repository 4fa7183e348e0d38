#include <viewer/elements/NameDrawer.h>

#include <viewer/elements/NameItem.h>

namespace {

const QColor letterColor(25, 25, 35);
const QColor rimColor(255, 255, 255, 240);

NameItem& nameOf(Graphics3dItem* item)
{
    return static_cast<NameItem&>(*item);
}

} // namespace

/// What lies beneath the letters.
class NameDrawer::Rims : public MultiGlyphItem3dDrawer
{
public:
    Rims(Scene3d* scene, QOpenGLShaderProgram* program)
        : MultiGlyphItem3dDrawer(scene, program)
    {
        setColor(rimColor);
    }
    std::unique_ptr<Item3dDrawer> clone() const override
    {
        return std::make_unique<Rims>(scene(), getProgram());
    }

    glm::vec3 getAnchor(Graphics3dItem* item) override { return glm::vec3(nameOf(item).place()); }
    float getGlyphHeight(Graphics3dItem*) override { return 0.0f; }
    int getGlyphCount(Graphics3dItem* item) override { return static_cast<int>(nameOf(item).rims().size()); }
    GlyphList getGlyphs(Graphics3dItem* item) override { return nameOf(item).rims(); }
};

NameDrawer::NameDrawer(Scene3d* scene)
    : MultiGlyphItem3dDrawer(scene)
{
    addRims();
}

NameDrawer::NameDrawer(const NameDrawer& other)
    : MultiGlyphItem3dDrawer(other.scene(), other.getProgram())
{
    addRims();
}

void NameDrawer::addRims()
{
    setColor(letterColor);
    m_rims = std::make_unique<Rims>(scene(), getProgram());
    addChildDrawer(m_rims.get());
}

NameDrawer::~NameDrawer() = default;

void NameDrawer::draw(const PaintContext& context, Filter filter)
{
    m_rims->draw(context, filter);
    MultiGlyphItem3dDrawer::draw(context, filter);
}

void NameDrawer::updateItem(int index)
{
    MultiGlyphItem3dDrawer::updateItem(index);
    m_rims->updateItem(index);
}

std::unique_ptr<Item3dDrawer> NameDrawer::clone() const
{
    return std::unique_ptr<Item3dDrawer>(new NameDrawer(*this));
}

glm::vec3 NameDrawer::getAnchor(Graphics3dItem* item)
{
    return glm::vec3(nameOf(item).place());
}

float NameDrawer::getGlyphHeight(Graphics3dItem*)
{
    return 0.0f; // as laid out
}

int NameDrawer::getGlyphCount(Graphics3dItem* item)
{
    return static_cast<int>(nameOf(item).letters().size());
}

NameDrawer::GlyphList NameDrawer::getGlyphs(Graphics3dItem* item)
{
    return nameOf(item).letters();
}
