#include "roletemplatechoices.h"

#include <host/core/zrglobals.h>
#include <host/gui/widgets/zrcombobox.h>

#include <QCoreApplication>
#include <QIcon>
#include <QSignalBlocker>

#include <algorithm>

namespace {

// The built-in template names, as ZRGlobals::roleTemplateNames() gives them, marked here so
// that the plugin's own catalogue carries their translations in the context "ZRGlobals": the
// screen translates them through a variable, which the extraction tool cannot follow, and the
// studio may run with this plugin's catalogue alone.
[[maybe_unused]] const char *const builtInTemplateNames[] = {
    QT_TRANSLATE_NOOP("ZRGlobals", "Супервизор"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Администратор"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Мобильный сотрудник"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Мобильный руководитель"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Оператор"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Служба охраны"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Отдел кадров"),
    QT_TRANSLATE_NOOP("ZRGlobals", "Аудитор"),
};

} // namespace

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
