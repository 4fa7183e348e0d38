#include <framework/app/IAppExtension.h>

#include <QtCore/QObject>

/// Defined nowhere: the library links, and cannot be loaded.
void functionThatNobodyDefines();

class UnresolvedPlugin : public QObject, public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.UnresolvedPlugin")
    Q_INTERFACES(IAppExtension)
public:
    bool extendApplication(Application*, const std::vector<int>&) override
    {
        functionThatNobodyDefines();
        return true;
    }
};

#include "UnresolvedPlugin.moc"
