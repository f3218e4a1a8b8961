#include <host/core/guipassfuncs.h>
#include <host/core/localstorage.h>
#include <src/mobileuserhelper.h>
#include <tests/support/builders.h>

#include <QtTest>

static void setDatabase(const QHash<QString, QString> &parameters)
{
    zeral::LocalStorage::instance()->applyChanged("db", {testing::makeDatabase(1, parameters)});
}

class TestMobileUserHelper : public QObject
{
    Q_OBJECT
private slots:
    void authData_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<QByteArray>("portJson");
        QTest::addRow("number") << "8443" << QByteArray("8443");
        QTest::addRow("letters") << "abc" << QByteArray("0");
        QTest::addRow("empty") << "" << QByteArray("0");
        QTest::addRow("hex is no base 10") << "0x1F" << QByteArray("0");
    }

    // The very text the mobile application reads, with a login and password beyond Latin-1.
    void authData()
    {
        QFETCH(QString, port);
        QFETCH(QByteArray, portJson);
        setDatabase({{"PT_MOBILE_HOST", "m.example.ru"}, {"PT_MOBILE_PORT", port}});
        const QString auth = MobileUserHelper::generateAuthData("пётр@example.ru", "Пароль 1");
        QCOMPARE(QByteArray::fromBase64(auth.toLatin1(), QByteArray::AbortOnBase64DecodingErrors),
                 "{\n    \"host\": \"m.example.ru\",\n    \"passw\": \"Пароль 1\",\n    \"port\": "
                     + portJson + ",\n    \"user\": \"пётр@example.ru\"\n}\n");
        QVERIFY(!auth.contains('\n'));
    }

    void passwordAndTemplates()
    {
        setDatabase({{"PT_PASSWORD_MIN_LENGTH", "30"}, {"PT_PASSWORD_REQUIRE_SPECIAL", "1"}});
        const QString password = MobileUserHelper::generatePassword();
        QCOMPARE(password.size(), 30);
        QCOMPARE(GUIPassFuncs::unmetCriteria(password, GUIPassFuncs::getPasswordOptions()),
                 QStringList());
        QCOMPARE(MobileUserHelper::standardMobileRoleTemplates(),
                 QStringList({"RT_MOBILE", "RT_MOBILE_CHIEF"}));
    }
};

QTEST_MAIN(TestMobileUserHelper)
#include "tst_mobileuserhelper.moc"
