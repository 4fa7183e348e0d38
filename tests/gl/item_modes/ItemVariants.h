#pragma once

#include <QtCore/QStringList>

#include <string>
#include <vector>

/// What of an item is drawn.
enum class Shape {
    Rectangle,
    Line,
    Solid,
    EmulatedSolid,
    Caption,
    Glyph,
    Point,
    FaceNodes, ///< the corners of a face, of which one is in view
    LineNodes, ///< the ends of a line, of which one is in view
    EditedLine,
    EditedPoint,
    Sphere,
    Cylinder
};
/// Where its colour comes from.
enum class Colors { Item, Vertices, Texture, Bitmap };
/// Where the item comes from: uniforms, attributes of an instance, or attributes of a glyph.
enum class Instances { None, Positions, Matrices, Glyphs };

/// A way to put a program together that draws items.
struct ItemVariant
{
    std::string name;
    QStringList stages;
    std::vector<std::string> defines;
    Shape shape;
    Colors colors;
    int colorMode = 0; ///< "uColorMode"
    Instances instances = Instances::None;
};

/// All of them that there are, but for those by height.
std::vector<ItemVariant> itemVariants();
