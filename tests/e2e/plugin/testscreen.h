#pragma once

#include <host/core/zrplugininterface.h>
#include <host/gui/widgets/pluginwidget.h>

#include <QStringList>

// A screen plugin for the studio's end-to-end tests. It writes down every call the studio
// makes on it, in order, in the property "calls", which a test reads through QObject.
class TestScreen : public PluginWidget, public ZRPluginInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID ZRPluginInterface_iid FILE "testscreen.json")
    Q_INTERFACES(ZRPluginInterface)
    Q_PROPERTY(QStringList calls MEMBER m_calls)

public:
    explicit TestScreen(QWidget *parent = nullptr);

    QList<CommandType> init(ZRServerInterface *server, const QString &name) override;
    QString pluginName() const override { return QStringLiteral("testscreen"); }
    int pluginVersion() const override { return 1; }
    QString pluginBuild() const override { return QStringLiteral("test"); }
    QWidget *widget() override { return this; }
    QObject *object() override { return this; }

public slots:
    bool canShow() override;
    void activated() override;
    void onTabActivated(int index) override;
    QList<PLUGIN_TAB> tabList() override;
    void insertedToInterface() override;

private:
    QStringList m_calls;
    int m_currentTab = 0;
};
