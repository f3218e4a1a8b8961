#include "testscreen.h"

#include <host/core/authdata.h>
#include <host/core/localstorage.h>
#include <shared/datasets.h>
#include <shared/rolenames.h>

TestScreen::TestScreen(QWidget *parent)
    : PluginWidget(parent)
{
    setWindowTitle(QStringLiteral("Тестовый экран"));
    connect(this, &PluginWidget::deactivate, this,
            [this] { m_calls.append(QStringLiteral("deactivate")); });
}

QList<CommandType> TestScreen::init(ZRServerInterface *server, const QString &name)
{
    m_calls.append(QStringLiteral("init:") + name);
    return ZRPluginInterface::init(server, name);
}

bool TestScreen::canShow()
{
    m_calls.append(QStringLiteral("canShow"));
    return AuthData::roles().contains(QLatin1String(zeral::role::USER_SHOW));
}

void TestScreen::activated()
{
    m_calls.append(QStringLiteral("activated"));
}

void TestScreen::onTabActivated(int index)
{
    m_currentTab = index;
    m_calls.append(QStringLiteral("onTabActivated:%1").arg(index));
}

QList<PLUGIN_TAB> TestScreen::tabList()
{
    QList<PLUGIN_TAB> tabs;
    const QStringList names = {QStringLiteral("Первая"), QStringLiteral("Скрытая"),
                               QStringLiteral("Третья")};
    for (int i = 0; i < names.size(); ++i)
        tabs.append({names.at(i), QIcon(), i, i == m_currentTab, i == 1});
    return tabs;
}

void TestScreen::insertedToInterface()
{
    // What the store holds when the screen is placed: everything, if the studio waited.
    const int users
        = zeral::LocalStorage::instance()->constObjects(QLatin1String(zeral::USER_DATANAME)).size();
    m_calls.append(QStringLiteral("insertedToInterface users:%1").arg(users));
}
