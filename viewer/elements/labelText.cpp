#include <viewer/elements/labelText.h>

#include <viewer/elements/ElementLabel.h>

#include <framework/model/CModelElement.h>

QString labelText(const CModelElement& element, const QString& sourceId, const QString& property)
{
    const QString text = element.getProperty(property).toString();
    const bool isNamed = property == QLatin1String("name") && element.getName() != sourceId;
    return ElementLabel::shownText(text.isEmpty() && isNamed ? element.getName() : text);
}
