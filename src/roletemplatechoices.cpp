#include "roletemplatechoices.h"

#include <host/core/zrglobals.h>
#include <host/gui/widgets/zrcombobox.h>

#include <QCoreApplication>
#include <QIcon>
#include <QSignalBlocker>

#include <algorithm>

QString RoleTemplateChoices::builtInName(const QString &id)
{
    const QString source = ZRGlobals::roleTemplateNames().value(id);
    if (source.isEmpty())
        return QString();
    return QCoreApplication::translate("ZRGlobals", source.toUtf8().constData());
}

void RoleTemplateChoices::fill(ZRComboBox *selector, QVector<Choice> choices)
{
    std::sort(choices.begin(), choices.end(), [](const Choice &a, const Choice &b) {
        const int byName = QString::localeAwareCompare(a.text, b.text);
        return byName != 0 ? byName < 0 : a.id < b.id;
    });
    const QSignalBlocker quiet(selector);
    selector->clear();
    for (const Choice &choice : qAsConst(choices))
        selector->insertItem(selector->count(), QIcon(), choice.text, choice.id);
}
