#pragma once

#include <QtCore/QString>

class CModelElement;

/// What the label of an element says, as labels are written; empty for one that has none. It is the
/// property's value; where the property is the name and the file gives none, the name that the element has
/// got since. sourceId: the identifier that the element has in its file, which readers make its name for want
/// of a better one.
QString labelText(const CModelElement& element, const QString& sourceId, const QString& property);
