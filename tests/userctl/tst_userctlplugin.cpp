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
        QCOMPARE(metaData.value(QStringLiteral("IID")).toString(),
                 QStringLiteral("zeral.zrservice.ZRPluginInterface/1.0"));
        QCOMPARE(metaData.value(QStringLiteral("className")).toString(), QStringLiteral("UserCtl"));
        QCOMPARE(metaData.value(QStringLiteral("MetaData"))
                     .toObject()
                     .value(QStringLiteral("Name"))
                     .toString(),
                 QStringLiteral("userctl"));

        QObject *instance = loader.instance();
        QVERIFY2(instance, qPrintable(loader.errorString()));
        for (const char *name : {"UserCtl", "ZRPluginInterface",
                                 "zeral.zrservice.ZRPluginInterface/1.0", "PluginWidget"})
            QVERIFY2(instance->qt_metacast(name), name);
        QVERIFY(!instance->qt_metacast("SomethingElse"));
        auto *plugin = qobject_cast<ZRPluginInterface *>(instance);
        QVERIFY(plugin);
        QCOMPARE(plugin->pluginName(), QStringLiteral("userctl"));
        QCOMPARE(plugin->pluginVersion(), 1);
        QCOMPARE(plugin->pluginBuild(), QStringLiteral("0.1"));
        QCOMPARE(plugin->object(), instance);
        QCOMPARE(plugin->widget(), qobject_cast<QWidget *>(instance));

        // One instance while it lives; a new one once it has gone.
        QCOMPARE(loader.instance(), instance);
        QPointer<QObject> first = instance;
        delete instance;
        QVERIFY(!first);
        QObject *second = loader.instance();
        QVERIFY(second);
        QVERIFY(qobject_cast<PluginWidget *>(second));
        delete second;
    }
};

QTEST_MAIN(TestUserCtlPlugin)
#include "tst_userctlplugin.moc"
