#pragma once

#include <QtCore/QVariant>
#include <QtGui/QOpenGLShaderProgram>

/// Set in programs that buildShaderProgram or a variant made: whether the vertex stage asks for the number of
/// a vertex.
inline constexpr const char* numbersVerticesProperty = "numbers_vertices";

/// Whether nobody links the program again, so that what was asked once holds for its life: it is linked, and
/// buildShaderProgram or a variant made it.
inline bool staysAsItIs(const QOpenGLShaderProgram& program)
{
    return program.isLinked() && program.property(numbersVerticesProperty).isValid();
}

/// What ask() finds out about a program. Of one that stays as it is it is called once, and what it found goes
/// with the program.
/// @param property  names what is asked
template <class T, class Ask>
T knownOf(QOpenGLShaderProgram& program, const char* property, Ask ask)
{
    struct Known : QObject
    {
        Known(QOpenGLShaderProgram& of, const T& found)
            : QObject(&of)
            , value(found)
        {
        }
        const T value;
    };
    if (const auto* known = static_cast<Known*>(program.property(property).template value<void*>()))
        return known->value;
    const T found = ask();
    if (staysAsItIs(program))
        program.setProperty(property, QVariant::fromValue<void*>(new Known(program, found)));
    return found;
}
