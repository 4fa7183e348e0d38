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
    /// Throws UsageError for unknown options and missing values.
    void parse(const QStringList& arguments);

    bool isSet(const QString& name) const { return m_parser.isSet(name); }
    bool isHelpAsked() const { return m_parser.isSet(QStringLiteral("help")); }
    /// The option's value; throws UsageError when it was given more than once.
    QString value(const QString& name) const;
    QStringList positionalArguments() const { return m_parser.positionalArguments(); }
    QString helpText() const;

private:
    QString nearestOption(const QString& wrong) const;

    QCommandLineParser m_parser;
    QString m_synopsis;
    QString m_description;
    QList<QCommandLineOption> m_options;
};

/// The candidate that is the fewest typing mistakes away from the word; empty when none is near.
QString nearestWord(const QString& word, const QStringList& candidates);
