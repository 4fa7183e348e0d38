#include <benchmarks/harness/Options.h>

#include <QtCore/QRegularExpression>

#include <stdexcept>

namespace {

[[noreturn]] void fail(const QString& text)
{
    throw std::invalid_argument(text.toStdString());
}

PairedRuns::Sides sidesOf(const QString& text)
{
    if (text == "ours") return PairedRuns::OursAlone;
    if (text == "plain") return PairedRuns::PlainAlone;
    fail(QStringLiteral("--alone takes ours or plain"));
}

} // namespace

Options Options::of(const QStringList& arguments)
{
    Options options;
    options.commit = QStringLiteral("unknown");
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& name = arguments[i];
        const auto value = [&] {
            if (i + 1 == arguments.size()) fail(name + " needs a value");
            return arguments[++i];
        };
        if (name == "--quick")
            options.isQuick = true;
        else if (name == "--check")
            options.checks = true;
        else if (name == "--write")
            options.writes = true;
        else if (name == "--filter")
            options.filter = value();
        else if (name == "--document")
            options.document = value();
        else if (name == "--commit")
            options.commit = value();
        else if (name == "--alone")
            options.sides = sidesOf(value());
        else if (name == "--child") {
            options.child = arguments.mid(i + 1);
            break;
        } else
            fail("unknown option '" + name + "'");
    }
    if (!QRegularExpression(options.filter).isValid())
        fail("'" + options.filter + "' is no regular expression");
    const bool isAlone = options.sides != PairedRuns::Both;
    if (isAlone && (options.writes || options.checks))
        fail(QStringLiteral("--alone leaves nothing to compare or record"));
    if (options.writes && (options.isQuick || !options.filter.isEmpty() || options.checks))
        fail(QStringLiteral("--write records a whole run and goes with no other option"));
    if ((options.writes || options.checks) && options.document.isEmpty())
        fail(QStringLiteral("--document is missing"));
    return options;
}
