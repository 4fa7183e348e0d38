#include <framework/app/IAppExtension.h>

#include <QtCore/QObject>

#include <stdexcept>

/// Cannot extend the application and says so by an exception.
class ThrowingPlugin : public QObject, public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.ThrowingPlugin")
    Q_INTERFACES(IAppExtension)
public:
    bool extendApplication(Application*, const std::vector<int>&) override
    {
        throw std::runtime_error("no\nlicence");
    }
};

#include "ThrowingPlugin.moc"
