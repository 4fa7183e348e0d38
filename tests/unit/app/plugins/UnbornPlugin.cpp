#include <QtCore/QObject>
#include <QtCore/QtPlugin>

#include <stdexcept>

/// Its object cannot be made.
class UnbornPlugin : public QObject
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.UnbornPlugin")
public:
    UnbornPlugin() { throw std::runtime_error("no room"); }
};

#include "UnbornPlugin.moc"
