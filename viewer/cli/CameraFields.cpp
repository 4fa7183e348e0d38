#include <viewer/cli/CameraFields.h>

#include <viewer/cli/CommandParser.h>
#include <viewer/cli/OptionValue.h>
#include <viewer/cli/UsageError.h>

OptionFields::OptionFields(const CommandParser& parser)
    : m_parser(parser)
{
}

bool OptionFields::has(const QString& name) const
{
    return m_parser.isSet(name);
}

QString OptionFields::shown(const QString& name) const
{
    return QStringLiteral("--") + name;
}

glm::dvec3 OptionFields::point(const QString& name) const
{
    return OptionValue::point(name, m_parser.value(name));
}

QSize OptionFields::size(const QString& name) const
{
    return OptionValue::size(name, m_parser.value(name));
}

double OptionFields::number(const QString& name) const
{
    return OptionValue::number(name, m_parser.value(name));
}

int OptionFields::word(const QString& name, const QStringList& words) const
{
    return OptionValue::word(name, m_parser.value(name), words);
}

void OptionFields::refuse(const QString& text) const
{
    throw UsageError(text);
}
