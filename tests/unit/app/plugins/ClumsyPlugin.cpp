#include "Calls.h"

#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>

#include <QtCore/QObject>

#include <stdexcept>

/// Extends the application, and throws in all that it does afterwards.
/// serves.
class ClumsyPlugin : public QObject,
                     public IModelExtension,
                     public ProjectGUI::IExtender,
                     public IAppExtension
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.example.ClumsyPlugin")
    Q_INTERFACES(IModelExtension ProjectGUI::IExtender IAppExtension)
public:
    bool extendApplication(Application*, const std::vector<int>& ids) override
    {
        noteCall("Clumsy.extendApplication after " + QString::number(ids.size()));
        return true;
    }
    void unextendApplication(Application*) override
    {
        noteCall("Clumsy.unextendApplication");
        throw 5;
    }
    void extendModel(CProjectModel*) override
    {
        noteCall("Clumsy.extendModel");
        throw std::runtime_error("no model");
    }
    void extendGUI(ProjectGUI*) override
    {
        noteCall("Clumsy.extendGUI");
        throw std::runtime_error("no window");
    }
};

#include "ClumsyPlugin.moc"
