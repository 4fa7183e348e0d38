#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>
#include <framework/gmx/BoundingBox.h>

#include <glm/glm.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

class PictureVolume;

/// Boxes, found by what a picture shows of them. Each has a number, which it keeps until it is removed.
///
/// The boxes lie one after the other, near ones together, and a tree over them has the box of every sixteen.
/// What changed is worked in at the next question: a box that moves costs its way up the tree, and where more
/// than half of them came, moved or went since they were put in order, they are put in order anew.
class VIEWER3DMODULE_EXPORT BoxTree
{
public:
    /// A new number, with a null box. Numbers that were removed are given again first.
    int add();
    /// Noted only: what is to be done about it, the next question does, or nobody where all boxes go.
    void remove(int number);
    /// @param box    scene units; one that is null or invalid is never found, and no part of bounds()
    /// @param reach  how far around it is drawn, pixels, finite
    void set(int number, const gmx::BoundingBox& box, float reach);

    /// All numbers are below it.
    std::size_t size() const { return m_positions.size(); }
    /// The box of all of them; null without any.
    gmx::BoundingBox bounds();
    /// Sets found[number] to 1 for all boxes that the volume reaches and to 0 for the others; its size to
    /// size().
    void find(const PictureVolume& volume, std::vector<std::uint8_t>& found);

private:
    struct Box
    {
        glm::dvec3 low{std::numeric_limits<double>::infinity()};
        glm::dvec3 high{-std::numeric_limits<double>::infinity()};
        float reach = 0.0f;
        int number = -1; // of what was removed, and of those that hold others: -1

        bool isEmpty() const { return !(low.x <= high.x); }
        glm::dvec3 center() const { return low * 0.5 + high * 0.5; }
        glm::dvec3 half() const { return (high - low) * 0.5; }
        void unite(const Box& other);
    };

    void change(int number);
    void settleRemoved();
    void update();
    void order();
    void shapeLevels();
    Box nodeOf(std::size_t level, std::size_t index) const;
    void visit(const PictureVolume& volume, unsigned int planes, std::size_t level, std::size_t index,
               std::vector<std::uint8_t>& found) const;
    /// Of the leaves of one box of the first level.
    /// @param reach  that of the box
    void takeReached(const PictureVolume& volume, unsigned int planes, float reach, std::size_t first,
                     std::vector<std::uint8_t>& found) const;
    void takeAll(std::size_t level, std::size_t index, std::vector<std::uint8_t>& found) const;

    std::vector<Box> m_leaves;
    std::vector<std::vector<Box>> m_levels; // the last has at most one box; none without leaves
    std::vector<std::uint32_t> m_positions; // of the numbers among the leaves
    std::vector<bool> m_isAstray;           // whether it came, moved or went since the order was made
    std::vector<int> m_freeNumbers;
    std::vector<int> m_removed;           // which are to become free numbers
    std::vector<std::uint32_t> m_changed; // nodes of the first level
    std::size_t m_astray = 0;
};
