#pragma once

#include <cstdint>

struct Observation;

/// Whom a subject is observed by, or an observer observes. A subject and an observer that know nobody else
/// name each other, as most do, and need no Observation between them. Internal to those two classes.
template <class Other>
class Ties
{
public:
    bool isNone() const { return m_word == 0; }
    /// The other one, where the two have each other only; else null.
    Other* only() const { return isMarked() ? reinterpret_cast<Other*>(m_word & ~mark) : nullptr; }
    /// The list otherwise.
    Observation* first() const { return isMarked() ? nullptr : reinterpret_cast<Observation*>(m_word); }

    void setOnly(Other& other) { m_word = reinterpret_cast<std::uintptr_t>(&other) | mark; }
    void setFirst(Observation* first) { m_word = reinterpret_cast<std::uintptr_t>(first); }
    void setNone() { m_word = 0; }

private:
    static constexpr std::uintptr_t mark = 1; // no address of an object is odd
    bool isMarked() const { return (m_word & mark) != 0; }

    std::uintptr_t m_word = 0;
};
