#include "Calls.h"

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>

#include <QtCore/QObject>

/// Serves in every way.
class GoodPlugin : public QObject, public IModelExtension, public ProjectGUI::IExtender, public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.GoodPlugin" FILE "GoodPlugin.json")
    Q_INTERFACES(IModelExtension ProjectGUI::IExtender IAppExtension)
public:
    bool extendApplication(Application*, const std::vector<int>& ids) override
    {
        noteCall("Good.extendApplication after " + QString::number(ids.size()));
        return true;
    }
    void unextendApplication(Application*) override { noteCall("Good.unextendApplication"); }
    void extendModel(CProjectModel*) override { noteCall("Good.extendModel"); }
    void extendGUI(ProjectGUI*) override { noteCall("Good.extendGUI"); }
};

#include "GoodPlugin.moc"
