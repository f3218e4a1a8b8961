// The built users screen as the studio loads it: a plugin file in the plugin folder.
#include <host/core/zrplugininterface.h>
#include <host/gui/widgets/pluginwidget.h>

#include <QJsonObject>
#include <QPluginLoader>
#include <QtTest>

class TestUserCtlPlugin : public QObject
{
    Q_OBJECT
private slots:
    void loadsAsAPluginOfTheStudio()
    {
        QPluginLoader loader(QStringLiteral(ZR_BINARY_DIR "/plugins/libuserctl.so"));
        const QJsonObject metaData = loader.metaData();
        QCOMPARE(metaData.value("IID").toString(), "zeral.zrservice.ZRPluginInterface/1.0");
        QCOMPARE(metaData.value("className").toString(), "UserCtl");
        QCOMPARE(metaData.value("MetaData").toObject().value("Name").toString(), "userctl");

        QObject *instance = loader.instance();
        QVERIFY2(instance, qPrintable(loader.errorString()));
        for (const char *name : {"UserCtl", "ZRPluginInterface",
                                 "zeral.zrservice.ZRPluginInterface/1.0", "PluginWidget"})
            QVERIFY2(instance->qt_metacast(name), name);
        QVERIFY(!instance->qt_metacast("SomethingElse"));
        // One screen while it lives, a new one once the studio has deleted it.
        QCOMPARE(loader.instance(), instance);
        auto *plugin = qobject_cast<ZRPluginInterface *>(instance);
        QVERIFY(plugin && qobject_cast<PluginWidget *>(instance));
        QCOMPARE(plugin->pluginName(), QStringLiteral("userctl"));
        QCOMPARE(plugin->object(), instance);
        QCOMPARE(plugin->widget(), qobject_cast<QWidget *>(instance));
        delete instance;
        QObject *second = loader.instance();
        QVERIFY(second);
        delete second;
    }
};

QTEST_MAIN(TestUserCtlPlugin)
#include "tst_userctlplugin.moc"
