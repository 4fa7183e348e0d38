#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

/// Notes a call where the test program finds it: libraries share nothing else that is as simple.
inline void noteCall(const QString& call)
{
    qApp->setProperty("pluginCalls", qApp->property("pluginCalls").toStringList() << call);
}
