#pragma once

#include <QtCore/QCommandLineParser>
#include <QtCore/QStringList>

/// The options of one command: parses, explains itself, and for an unknown option names the nearest one.
class CommandParser
{
public:
    /// synopsis: what follows "viewer3d" in the help's first line.
    CommandParser(const QString& synopsis, const QString& description);

    /// An option with a value, or a flag without valueName.
    void add(const QStringList& names, const QString& description, const QString& valueName = {});
    /// An option whose value may be left out. It stands after an equals sign, or is the next argument when
    /// that has this suffix, which no input has; so inputs can follow the option. Without a suffix the next
    /// argument is the value when it is a plain word, with neither a dot nor a slash.
    void addWithOptionalValue(const QString& name, const QString& description, const QString& valueName,
                              const QString& suffix);
    /// Throws UsageError for unknown options and missing values.
    void parse(const QStringList& arguments);

    bool isSet(const QString& name) const { return m_parser.isSet(name); }
    bool isHelpAsked() const { return m_parser.isSet(QStringLiteral("help")); }
    /// The option's value, empty without; throws UsageError when it was given more than once.
    QString value(const QString& name) const;
    QStringList positionalArguments() const { return m_parser.positionalArguments(); }
    QString helpText() const;

private:
    struct OptionalValue
    {
        QString name; ///< with dashes
        QString suffix;
        QStringList values; ///< one for each time that it is given, empty where that is left out
    };
    /// Takes the values that may be left out out of the arguments.
    QStringList takeOptionalValues(const QStringList& arguments);
    QStringList valuesOf(const QString& name) const;
    QString nearestOption(const QString& wrong) const;

    QCommandLineParser m_parser;
    QString m_synopsis;
    QString m_description;
    QList<QCommandLineOption> m_options;
    QList<OptionalValue> m_optionalValues;
};

/// The candidate that is the fewest typing mistakes away from the word; empty when none is near.
QString nearestWord(const QString& word, const QStringList& candidates);
