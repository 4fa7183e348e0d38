#include <Viewer3dModule/shaders/ProgramVariants.h>

#include <Viewer3dModule/shaders/DeferredProgram.h>
#include <Viewer3dModule/shaders/ShaderPreprocessor.h>
#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>
#include <Viewer3dModule/shaders/UniformCopy.h>
#include <framework/ksp/Log.h>
#include <framework/ksp/log_format.h>

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace {

const char* const withColorsOnly = "RX_COLORS_ONLY";
const char* const withoutMarks = "RX_NO_SELECTION_BUFFER";
const char* const withRecords = "RX_USE_ITEM_RECORDS";
const char* const withItemColorsOnly = "RX_ITEM_COLORS_ONLY";
const char* const withVisibleItemsOnly = "RX_VISIBLE_ITEMS_ONLY";

const char* const withTexCoords = "RX_USE_PER_VERTEX_TEX_COORDS";
const char* const withoutMaterials = "RX_NO_MATERIALS";
const char* const withNormals = "RX_USE_PER_VERTEX_NORMAL";
const char* const withVertexColors = "RX_USE_PER_VERTEX_COLOR";
const char* const withHeights = "RX_USE_ELEVATION_COLOR";
const char* const withLightInAlpha = "RX_LIGHT_IN_ALPHA";
const char* const withLargeSurfaces = "RX_LARGE_SURFACES";
const char* const withVertexStageColors = "RX_VERTEX_STAGE_COLORS";

const char* defineOf(ProgramFence fence)
{
    return fence == ProgramFence::Sphere ? "RX_USE_SPHERE_FENCE" : "RX_USE_SWEPT_FENCE";
}

bool isPlain(const ProgramVariant& variant)
{
    return variant.fence == ProgramFence::None && !variant.drawsMasks && !variant.marksItems &&
           !variant.readsRecords && variant.colors == ProgramColors::All && !variant.isUnlit &&
           !variant.drawsLargeSurfaces;
}

using Names = std::set<std::string_view>;

// The names of defines that a source mentions.
Names namesIn(const QByteArray& text)
{
    Names names;
    const std::string_view view(text.constData(), static_cast<std::size_t>(text.size()));
    const auto isOfName = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; };
    for (std::size_t at = view.find("RX_"); at < view.size(); at = view.find("RX_", at)) {
        const std::size_t begin = at;
        while (at < view.size() && isOfName(view[at]))
            ++at;
        names.insert(view.substr(begin, at - begin));
    }
    return names;
}

std::vector<Names> namesOf(const QList<QByteArray>& texts)
{
    std::vector<Names> names;
    for (const QByteArray& text : texts)
        names.push_back(namesIn(text));
    return names;
}

/// The variants of one program, whose child this is; it is linked or still to be built.
class Variants : public QObject
{
public:
    explicit Variants(QOpenGLShaderProgram& program)
        : QObject(&program)
        , m_program(program)
        , m_sources(sourcesOf(program))
        , m_texts(textsOf(m_sources.files))
        , m_names(namesOf(m_texts))
        , m_canHaveFence(asksFor("fragment", defineOf(ProgramFence::Sphere)) &&
                         !has(defineOf(ProgramFence::Sphere)) && !has(defineOf(ProgramFence::Swept)))
        , m_canDrawMasks(has(withColorsOnly) && asksFor("fragment", withColorsOnly))
        , m_canMark(has(withoutMarks) && asksFor("fragment", withoutMarks))
        , m_canReadRecords(asksFor("vertex", withRecords) && !has(withRecords) &&
                           !has("RX_USE_INSTANCED_DRAW"))
        , m_canShowItemColors(asksFor("fragment", withItemColorsOnly))
        , m_canShowVisibleItems(asksFor("fragment", withVisibleItemsOnly))
        , m_canShowVisibleVertices(m_sources.files.size() == 2 && asksFor("vertex", withTexCoords) &&
                                   asksFor("fragment", withoutMaterials))
        , m_canBeUnlit(has(withNormals) && m_sources.files.size() == 2 && asksFor("vertex", withNormals) &&
                       asksFor("fragment", withNormals))
        , m_canHideLight(m_sources.files.size() == 2 && asksFor("vertex", withLightInAlpha) &&
                         asksFor("fragment", withLightInAlpha))
        , m_canChooseColors(m_sources.files.size() == 2 && has(withVertexColors) && !has(withHeights) &&
                            asksFor("vertex", withVertexStageColors) &&
                            asksFor("fragment", withVertexStageColors))
        , m_canDrawLargeSurfaces(m_sources.files.size() <= 2 && asksFor("vertex", withLargeSurfaces))
    {
    }

    /// The one of the program; made when there is none.
    static Variants& of(QOpenGLShaderProgram& program)
    {
        const char* const property = "variants";
        auto* variants = static_cast<Variants*>(program.property(property).value<void*>());
        if (!variants) {
            variants = new Variants(program);
            program.setProperty(property, QVariant::fromValue<void*>(variants));
        }
        return *variants;
    }

    QOpenGLShaderProgram& find(ProgramVariant wanted)
    {
        const Variant* variant = findOther(wanted);
        return variant ? *variant->program : m_program;
    }

    QOpenGLShaderProgram& begin(ProgramVariant wanted, const OwnUniforms& own)
    {
        Variant* variant = findOther(wanted);
        if (!variant) return m_program;
        OpenGLFunctions* gl = currentGLFunctions();
        if (gl && variant->program->bind()) variant->uniforms->begin(*gl, builtProgram(), own);
        return *variant->program;
    }

    /// Where the variant is one of these.
    static void takeItemUniforms(QOpenGLShaderProgram& variant)
    {
        auto* uniforms = static_cast<UniformCopy*>(variant.property(uniformsProperty).value<void*>());
        OpenGLFunctions* gl = uniforms ? currentGLFunctions() : nullptr;
        if (gl) uniforms->takeItems(*gl, static_cast<Variants*>(variant.parent())->builtProgram());
    }

    bool canReadRecords() const { return m_canReadRecords; }

private:
    static constexpr const char* uniformsProperty = "variant_uniforms";

    struct Variant
    {
        QOpenGLShaderProgram* program = nullptr; ///< null when it cannot be built
        std::unique_ptr<UniformCopy> uniforms;
    };

    // Null where it is still to be built: it has all uniforms at their first values, as each variant has.
    QOpenGLShaderProgram* builtProgram() const
    {
        return DeferredProgram::isWaiting(&m_program) ? nullptr : &m_program;
    }

    // Null where the program itself is to draw.
    Variant* findOther(ProgramVariant wanted)
    {
        if (!m_canHaveFence) wanted.fence = ProgramFence::None;
        if (!m_canDrawMasks) wanted.drawsMasks = false;
        if (!m_canMark) wanted.marksItems = false;
        if (!m_canReadRecords) wanted.readsRecords = false;
        if (wanted.colors == ProgramColors::VisibleItems && !m_canShowVisibleItems)
            wanted.colors = ProgramColors::OfItems;
        if (wanted.colors == ProgramColors::OfItems && !m_canShowItemColors)
            wanted.colors = ProgramColors::All;
        if (wanted.colors == ProgramColors::VisibleVertices && !m_canShowVisibleVertices)
            wanted.colors = ProgramColors::All;
        if (!m_canBeUnlit) wanted.isUnlit = false;
        if (!m_canDrawLargeSurfaces || wanted.readsRecords) wanted.drawsLargeSurfaces = false;
        if (isPlain(wanted)) return nullptr;
        std::optional<Variant>& variant =
            m_built[static_cast<int>(wanted.fence)][wanted.drawsMasks][wanted.marksItems][wanted.readsRecords]
                   [static_cast<int>(wanted.colors)][wanted.isUnlit][wanted.drawsLargeSurfaces];
        if (!variant) variant.emplace(build(wanted));
        if (variant->program) return &*variant;
        if (!m_program.isLinked()) return nullptr;
        if (wanted.readsRecords)
            wanted.readsRecords = false;
        else if (wanted.fence != ProgramFence::None)
            wanted.fence = ProgramFence::None;
        else
            return nullptr;
        return findOther(wanted);
    }

    bool has(const std::string& define) const
    {
        const std::vector<std::string>& defines = m_sources.defines;
        return std::find(defines.begin(), defines.end(), define) != defines.end();
    }

    // What only captures or only leaves depths has no stage that could mark or leave out anything.
    bool asksFor(const char* stage, const char* define) const
    {
        for (int i = 0; i < m_texts.size(); ++i)
            if (m_sources.files[i].contains(QLatin1String(stage)) && m_names[i].count(define) != 0)
                return true;
        return false;
    }

    Variant build(ProgramVariant wanted)
    {
        std::vector<std::string> defines = m_sources.defines;
        const auto drop = [&defines](const char* define) {
            defines.erase(std::remove(defines.begin(), defines.end(), define), defines.end());
        };
        if (wanted.drawsMasks) drop(withColorsOnly);
        if (wanted.marksItems) drop(withoutMarks);
        if (wanted.fence != ProgramFence::None) defines.emplace_back(defineOf(wanted.fence));
        if (wanted.readsRecords) defines.emplace_back(withRecords);
        if (wanted.isUnlit) drop(withNormals);
        if (wanted.drawsLargeSurfaces) defines.emplace_back(withLargeSurfaces);
        if (wanted.colors == ProgramColors::VisibleVertices) drop(withTexCoords);
        addColors(wanted, defines);
        Variant variant;
        variant.program = new QOpenGLShaderProgram(this);
        setSources(*variant.program, {m_sources.files, defines});
        const QStringList errors = buildFromSources(*variant.program, {}, m_texts, HandedText::Active);
        if (variant.program->isLinked()) {
            variant.uniforms = std::make_unique<UniformCopy>(*variant.program);
            variant.program->setProperty(uniformsProperty,
                                         QVariant::fromValue<void*>(variant.uniforms.get()));
            return variant;
        }
        delete std::exchange(variant.program, nullptr);
        // Where the program cannot be built itself, that is all there is to tell.
        DeferredProgram::build(&m_program);
        if (!m_program.isLinked()) return variant;
        logErrors(errors);
        ksp::log_format(ksp::Log::Error, "%s and others: drawn without %s",
                        qUtf8Printable(m_sources.files.value(0)), missing(wanted));
        return variant;
    }

    void addColors(const ProgramVariant& wanted, std::vector<std::string>& defines) const
    {
        const bool isOfVertices = wanted.colors == ProgramColors::VisibleVertices;
        const bool isOfVisibleItems = wanted.colors == ProgramColors::VisibleItems;
        const bool isOfItems = isOfVisibleItems || wanted.colors == ProgramColors::OfItems;
        if (isOfItems && m_canShowItemColors) defines.emplace_back(withItemColorsOnly);
        if (isOfItems && m_canHideLight) defines.emplace_back(withLightInAlpha);
        if (isOfVertices) defines.emplace_back(withoutMaterials);
        if (isOfVertices && wanted.isUnlit && m_canChooseColors) defines.emplace_back(withVertexStageColors);
        if (isOfVertices || isOfVisibleItems) defines.emplace_back(withVisibleItemsOnly);
    }

    // What is given up first when the variant cannot be built.
    static const char* missing(const ProgramVariant& variant)
    {
        if (variant.readsRecords) return "records of items";
        if (variant.fence != ProgramFence::None) return "the fence";
        return variant.marksItems ? "marking what is selected" : "masks";
    }

    QOpenGLShaderProgram& m_program;
    ProgramSources m_sources;
    QList<QByteArray> m_texts;  ///< of the files
    std::vector<Names> m_names; ///< in each of these
    bool m_canHaveFence;
    bool m_canDrawMasks;
    bool m_canMark;
    bool m_canReadRecords;
    bool m_canShowItemColors;
    bool m_canShowVisibleItems;
    bool m_canShowVisibleVertices;
    bool m_canBeUnlit; // other stages hand normals on whatever is defined
    bool m_canHideLight;
    bool m_canChooseColors;
    bool m_canDrawLargeSurfaces;
    std::optional<Variant> m_built[3][2][2][2][4][2][2]; ///< in the order of ProgramVariant
};

} // namespace

QOpenGLShaderProgram& findProgramVariant(QOpenGLShaderProgram& program, ProgramVariant variant)
{
    if (isPlain(variant)) return program;
    return Variants::of(program).find(variant);
}

bool mayReadRecords(QOpenGLShaderProgram& program)
{
    return Variants::of(program).canReadRecords();
}

QOpenGLShaderProgram& beginProgramVariant(QOpenGLShaderProgram& program, ProgramVariant variant,
                                          const OwnUniforms& own)
{
    if (isPlain(variant)) return program;
    return Variants::of(program).begin(variant, own);
}

void takeItemUniforms(QOpenGLShaderProgram& variant)
{
    Variants::takeItemUniforms(variant);
}

bool isForLargeSurfaces(const QOpenGLShaderProgram& variant)
{
    const std::vector<std::string> defines = sourcesOf(variant).defines;
    return std::find(defines.begin(), defines.end(), withLargeSurfaces) != defines.end();
}

bool showsOwnAlphas(const QOpenGLShaderProgram& variant)
{
    const std::vector<std::string> defines = sourcesOf(variant).defines;
    const auto has = [&defines](const char* define) {
        return std::find(defines.begin(), defines.end(), define) != defines.end();
    };
    return has(withVisibleItemsOnly) && !has(withHeights);
}
