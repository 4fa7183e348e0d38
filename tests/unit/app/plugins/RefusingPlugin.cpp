#include <framework/app/IAppExtension.h>

#include <QtCore/QObject>

/// Loads but will not serve.
class RefusingPlugin : public QObject, public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.RefusingPlugin")
    Q_INTERFACES(IAppExtension)
public:
    bool extendApplication(Application*, const std::vector<int>&) override { return false; }
};

#include "RefusingPlugin.moc"
