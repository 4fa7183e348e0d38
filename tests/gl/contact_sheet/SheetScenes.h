#pragma once

#include "CellDrawing.h"

/// What the contact sheet shows of each program of ProgramList.h.
class SheetScenes : public CellDrawing
{
protected:
    enum class Kind {
        Item,    ///< draws items: has all modes
        Glue,    ///< draws glue masks
        EyeDome, ///< a pass over a picture
    };
    struct Scene
    {
        std::string program;
        Kind kind;
        void (SheetScenes::*draw)();
        /// The ids that the masks show, or the layers that the glue mask shows.
        std::set<std::uint64_t> shown;
    };
    /// One for each program, in the order of ProgramList.h.
    static const std::vector<Scene>& scenes();
    static const Scene& sceneOf(const std::string& program);

    /// Draws one in a mode; its program must have been selected.
    Output drawScene(const Scene& scene, Mode mode);
    /// Draws what all glue programs draw into one picture.
    Output drawAllGlue();
    /// Lights a picture of steps and towers in this way: 0, 1 or 2 as edl_shading_type.
    Output drawEyeDome(int shading);
    /// All pictures of one program.
    Strip stripOf(const Scene& scene);

private:
    void drawMono();
    void drawVertexColor();
    void drawTexture();
    void drawWideLines();
    void drawDashedLines();
    void drawSolidLines();
    void drawCaptions();
    void drawMeshes();
    void drawSpheres();
    void drawCylinders();
    void drawSpheresOf(unsigned primitive, const std::vector<glm::mat4>& places);
    void drawGlyphs();
    void drawPoints();
    void drawInstances();
    void drawEditNodes();
    void drawEditPoints();
    void drawFaceNodes();
    void drawLineNodes();
    void drawGluePoints();
    void drawGlueLines();
    void drawGlueFaces();
    void drawPictureForEyeDome();
};
