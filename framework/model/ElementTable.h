#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/LONGID.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

class CModelElement;

/// Elements by identifier. Identifiers that follow one another, as most do, share an entry: an element takes
/// some ten bytes, and one that is far from all others 300.
class HOSTFRAMEWORK_EXPORT ElementTable
{
public:
    /// The element with the identifier, or null.
    CModelElement* find(LONGID id) const;
    /// False, and nothing happens, where the identifier has an element already. The element is not owned.
    bool add(LONGID id, CModelElement& element);
    void remove(LONGID id);

private:
    static constexpr std::size_t span = 32;
    /// Identifiers that follow one another.
    struct Stretch
    {
        std::size_t count = 0; // of elements
        std::array<CModelElement*, span> elements{};
    };

    static std::uint64_t stretchOf(LONGID id) { return static_cast<std::uint64_t>(id) / span; }

    std::unordered_map<std::uint64_t, Stretch> m_stretches; // none without an element
};
