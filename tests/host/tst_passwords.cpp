#include <host/core/guipassfuncs.h>
#include <host/core/localstorage.h>
#include <host/core/passhash.h>
#include <shared/dbkeys.h>
#include <tests/support/builders.h>

#include <QtTest>

using Options = QMap<QString, QVariant>;
using Pass = GUIPassFuncs;

namespace {

Options policy(int minLength, bool upper, bool lower, bool digit, bool special)
{
    return {{Pass::MinLength, minLength},
            {Pass::RequireUpper, upper},
            {Pass::RequireLower, lower},
            {Pass::RequireDigit, digit},
            {Pass::RequireSpecial, special}};
}

bool has(const QString &text, const char *pattern)
{
    return text.contains(QRegularExpression(QLatin1String(pattern)));
}

} // namespace

class TestPasswords : public QObject
{
    Q_OBJECT

private slots:
    void encrypt_data();
    void encrypt();
    void generatedPasswordsMeetPolicy_data();
    void generatedPasswordsMeetPolicy();
    void unmetCriteria_data();
    void unmetCriteria();
    void optionsFromDatabase_data();
    void optionsFromDatabase();
};

void TestPasswords::encrypt_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("md5");
    QTest::addColumn<QString>("sha256");
    // Digests computed apart with md5sum / sha256sum over the UTF-8 bytes.
    QTest::addRow("empty") << QString() << "d41d8cd98f00b204e9800998ecf8427e"
                           << "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    QTest::addRow("abc") << QStringLiteral("abc") << "900150983cd24fb0d6963f7d28e17f72"
                         << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    QTest::addRow("russian") << QStringLiteral("пароль") << "e242f36f4f95f12966da8fa2efd59992"
                             << "2dbc574daca52689a24fb60e835f8c19a36400830df7350859dd32d1abaaec5d";
}

void TestPasswords::encrypt()
{
    QFETCH(QString, password);
    QFETCH(QString, md5);
    QFETCH(QString, sha256);
    QCOMPARE(PassHash::encrypt(password, QCryptographicHash::Md5), md5);
    QCOMPARE(PassHash::encrypt(password, QCryptographicHash::Sha256), sha256);
}

void TestPasswords::generatedPasswordsMeetPolicy_data()
{
    QTest::addColumn<Options>("options");
    QTest::addColumn<int>("shortest"); // the generator's length at least; 128 at most
    QTest::addRow("defaults") << policy(8, true, true, true, false) << 12;
    QTest::addRow("min length 20") << policy(20, true, true, true, false) << 20;
    QTest::addRow("special required") << policy(8, true, true, true, true) << 12;
    QTest::addRow("nothing required") << policy(1, false, false, false, false) << 12;
    QTest::addRow("min length 200, clamped") << policy(200, true, true, true, true) << 128;
}

void TestPasswords::generatedPasswordsMeetPolicy()
{
    QFETCH(Options, options);
    QFETCH(int, shortest);
    const int runs = 500;
    QSet<QString> seen;
    for (int i = 0; i < runs; ++i) {
        const QString password = GUIPassFuncs::generatePassword(options);
        const QByteArray text = password.toUtf8();
        QVERIFY2(GUIPassFuncs::unmetCriteria(password, options).isEmpty(), text);
        QVERIFY2(password.size() >= shortest && password.size() <= 128, text);
        // Typeable on any keyboard: printable ASCII, no blanks.
        QVERIFY2(has(password, "^[!-~]+$"), text);
        QVERIFY2(!options[Pass::RequireUpper].toBool() || has(password, "[A-Z]"), text);
        QVERIFY2(!options[Pass::RequireLower].toBool() || has(password, "[a-z]"), text);
        QVERIFY2(!options[Pass::RequireDigit].toBool() || has(password, "[0-9]"), text);
        QVERIFY2(!options[Pass::RequireSpecial].toBool() || has(password, "[^A-Za-z0-9]"), text);
        seen.insert(password);
    }
    QCOMPARE(seen.size(), runs);
}

void TestPasswords::unmetCriteria_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<Options>("options");
    QTest::addColumn<QStringList>("unmet");
    const Options usual = policy(8, true, true, true, false);
    const Options strict = policy(10, true, true, true, true);
    QTest::addRow("one too short") << "Abcdef1" << usual << QStringList{Pass::MinLength};
    QTest::addRow("no upper") << "abcdefg1" << usual << QStringList{Pass::RequireUpper};
    QTest::addRow("no lower") << "ABCDEFG1" << usual << QStringList{Pass::RequireLower};
    QTest::addRow("no digit") << "Abcdefgh" << usual << QStringList{Pass::RequireDigit};
    QTest::addRow("no special") << "Abcdefgh12" << strict << QStringList{Pass::RequireSpecial};
    QTest::addRow("meets the strict") << "Abcdefg1#x" << strict << QStringList();
    QTest::addRow("above the longest policy")
        << QString(128, 'a') << policy(500, false, false, false, false) << QStringList();
}

void TestPasswords::unmetCriteria()
{
    QFETCH(QString, password);
    QFETCH(Options, options);
    QFETCH(QStringList, unmet);
    QCOMPARE(GUIPassFuncs::unmetCriteria(password, options), unmet);
}

void TestPasswords::optionsFromDatabase_data()
{
    // Of the database object: length, upper, lower, digit, special; null: unset. None: no object.
    QTest::addColumn<QStringList>("settings");
    QTest::addColumn<Options>("expected");
    const Options defaults = policy(8, true, true, true, false);
    QTest::addRow("no database object") << QStringList() << defaults;
    QTest::addRow("every setting")
        << QStringList{"14", "0", "false", "no", "true"} << policy(14, false, false, false, true);
    QTest::addRow("other spellings")
        << QStringList{" 9 ", "1", {}, {}, "YES"} << policy(9, true, true, true, true);
    QTest::addRow("unreadable, defaults kept")
        << QStringList{"twelve", "maybe", "-", "?", "perhaps"} << defaults;
    QTest::addRow("too long") << QStringList{"500"} << policy(128, true, true, true, false);
}

void TestPasswords::optionsFromDatabase()
{
    QFETCH(QStringList, settings);
    QFETCH(Options, expected);
    const char *keys[]
        = {db::database::PASSWORD_MIN_LENGTH, db::database::PASSWORD_REQUIRE_UPPER,
           db::database::PASSWORD_REQUIRE_LOWER, db::database::PASSWORD_REQUIRE_DIGIT,
           db::database::PASSWORD_REQUIRE_SPECIAL};
    QHash<QString, QString> parameters;
    for (int i = 0; i < settings.size(); ++i) {
        if (!settings.at(i).isNull())
            parameters.insert(QLatin1String(keys[i]), settings.at(i));
    }
    // Another object of the dataset, with settings of its own, must not be read.
    QList<zeral::ObjectInfo> objects
        = {testing::makeObject(2, "OT_DEPARTMENT", {{keys[0], "77"}, {keys[1], "0"}})};
    if (!settings.isEmpty())
        objects.append(testing::makeDatabase(1, parameters));
    zeral::LocalStorage::instance()->clear();
    zeral::LocalStorage::instance()->applyChanged(QStringLiteral("db"), objects);
    QCOMPARE(GUIPassFuncs::getPasswordOptions(), expected);
}

QTEST_GUILESS_MAIN(TestPasswords)
#include "tst_passwords.moc"
