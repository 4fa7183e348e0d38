#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>
#include <glm/glm.hpp>

class CommandParser;

/// What is said about a camera, by options on the command line or by a member of a list in a file: values by
/// name. A value that is not what is wanted throws ksp::CommonError; asking for one that is missing too.
class CameraFields
{
public:
    virtual ~CameraFields() = default;
    virtual bool has(const QString& name) const = 0;
    /// How messages call it.
    virtual QString shown(const QString& name) const = 0;
    virtual glm::dvec3 point(const QString& name) const = 0;
    virtual QSize size(const QString& name) const = 0;
    virtual double number(const QString& name) const = 0;
    /// The number of the word in the list.
    virtual int word(const QString& name, const QStringList& words) const = 0;
    /// Throws with the text.
    [[noreturn]] virtual void refuse(const QString& text) const = 0;
};

/// The options of a command; throws UsageError.
class OptionFields : public CameraFields
{
public:
    /// The parser is not owned.
    explicit OptionFields(const CommandParser& parser);

    bool has(const QString& name) const override;
    QString shown(const QString& name) const override;
    glm::dvec3 point(const QString& name) const override;
    QSize size(const QString& name) const override;
    double number(const QString& name) const override;
    int word(const QString& name, const QStringList& words) const override;
    [[noreturn]] void refuse(const QString& text) const override;

private:
    const CommandParser& m_parser;
};
