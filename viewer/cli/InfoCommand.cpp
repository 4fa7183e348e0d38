#include <viewer/cli/Commands.h>

#include <viewer/ElementSummary.h>
#include <viewer/FileOpener.h>
#include <viewer/Host.h>
#include <viewer/cli/ProgressBar.h>
#include <viewer/elements/ElementTypes.h>
#include <viewer/elements/MeshElement.h>
#include <viewer/printable.h>

#include <framework/model/CModelElementManager.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/CityObjectElement.h>
#include <framework/model/StationElement.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QLocale>

namespace {

/// As many digits as tell the number from its neighbours, without an exponent.
QString digits(double value)
{
    return QString::number(value, 'f', QLocale::FloatingPointShortest);
}

QString pointText(const glm::dvec3& point)
{
    return QStringLiteral("%1 %2 %3").arg(digits(point.x), digits(point.y), digits(point.z));
}

QJsonArray pointJson(const glm::dvec3& point)
{
    return {point.x, point.y, point.z};
}

QJsonObject summaryJson(const ElementSummary& summary)
{
    QJsonObject object;
    object["points"] = static_cast<double>(summary.points);
    object["lines"] = static_cast<double>(summary.lines);
    object["triangles"] = static_cast<double>(summary.triangles);
    if (summary.bounds.isValid())
        object["bounds"] = QJsonObject{{"min", pointJson(summary.bounds.getMin())},
                                       {"max", pointJson(summary.bounds.getMax())}};
    return object;
}

QJsonObject cameraJson(const StationElement::Camera& camera)
{
    QJsonArray parameters;
    for (const double parameter : camera.parameters)
        parameters.append(parameter);
    return {{"model", camera.model},
            {"size", QJsonArray{camera.width, camera.height}},
            {"parameters", parameters}};
}

QJsonObject attributesJson(const CModelElement& element)
{
    QJsonObject object;
    for (const QString& name : element.getPropertyNames())
        object[name] = QJsonValue::fromVariant(element.getProperty(name));
    return object;
}

QJsonObject elementJson(const CModelElement& element, const ElementSummary& summary)
{
    QJsonObject object = summaryJson(summary);
    object["id"] = static_cast<double>(element.getId());
    object["type"] = element_types::name(element.getType());
    object["name"] = element.getName();
    if (const auto* mesh = dynamic_cast<const MeshElement*>(&element)) object["file"] = mesh->getPath();
    if (const auto* city = dynamic_cast<const CityObjectElement*>(&element)) {
        object["objectType"] = city->getObjectType();
        object["source"] = city->getSourceId();
        object["parents"] = QJsonArray::fromStringList(city->getParentIds());
        object["attributes"] = attributesJson(*city);
    }
    if (const auto* station = dynamic_cast<const StationElement*>(&element)) {
        const StationElement::Pose& pose = station->getPose();
        const glm::dquat& q = pose.rotation;
        object["position"] = pointJson(station->getCenter());
        object["rotation"] = QJsonArray{q.w, q.x, q.y, q.z};
        object["translation"] = pointJson(pose.translation);
        object["camera"] = cameraJson(station->getCamera());
    }
    return object;
}

QString summaryText(const ElementSummary& summary)
{
    QString text = QStringLiteral("%1 points, %2 lines, %3 triangles")
                       .arg(summary.points)
                       .arg(summary.lines)
                       .arg(summary.triangles);
    if (summary.bounds.isValid())
        text += QStringLiteral("; from %1 to %2")
                    .arg(pointText(summary.bounds.getMin()), pointText(summary.bounds.getMax()));
    return text;
}

} // namespace

QByteArray commands::info(const InfoOptions& options)
{
    ProgressBar bar;
    Host host(Host::Settings::InMemory);
    options.reading.applyTo(host);
    const std::unique_ptr<CProject> project = host.createProject();
    FileOpener(host, *project, nullptr).open(options.files, bar.progress());

    QJsonArray elements;
    QString text;
    ElementSummary total;
    for (const CModelElementManager* manager : project->getModel()->getItemManagers()) {
        for (const CModelElement* element : manager->getItems()) {
            const ElementSummary summary = ElementSummary::of(*element);
            total.add(summary);
            if (options.json)
                elements.append(elementJson(*element, summary));
            else
                text += QStringLiteral("%1 %2 %3: %4\n")
                            .arg(element->getId())
                            .arg(element_types::name(element->getType()), quoted(element->getName()),
                                 summaryText(summary));
        }
    }
    const int count = project->getModel()->getElementsCount();
    if (!options.json)
        return (text + QStringLiteral("%1 elements: %2\n").arg(count).arg(summaryText(total))).toUtf8();
    QJsonObject root = summaryJson(total);
    root["elements"] = elements;
    return QJsonDocument(root).toJson();
}
