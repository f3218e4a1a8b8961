#include <host/core/guipassfuncs.h>
#include <host/core/localstorage.h>
#include <host/core/passhash.h>
#include <shared/dbkeys.h>
#include <tests/support/builders.h>

#include <QtTest>

#include <algorithm>
#include <functional>

using Options = QMap<QString, QVariant>;

namespace {

Options policy(int minLength, bool upper, bool lower, bool digit, bool special)
{
    return {{GUIPassFuncs::MinLength, minLength},
            {GUIPassFuncs::RequireUpper, upper},
            {GUIPassFuncs::RequireLower, lower},
            {GUIPassFuncs::RequireDigit, digit},
            {GUIPassFuncs::RequireSpecial, special}};
}

bool hasAny(const QString &text, const std::function<bool(ushort)> &test)
{
    return std::any_of(text.cbegin(), text.cend(), [&](QChar c) { return test(c.unicode()); });
}

bool isAsciiLetterOrDigit(ushort u)
{
    return (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z');
}

} // namespace

class TestPasswords : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void encrypt_data();
    void encrypt();
    void generatedPasswordsMeetPolicy_data();
    void generatedPasswordsMeetPolicy();
    void unmetCriteria_data();
    void unmetCriteria();
    void optionsFromDatabase_data();
    void optionsFromDatabase();
};

void TestPasswords::init()
{
    zeral::LocalStorage::instance()->clear();
}

void TestPasswords::encrypt_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("algorithm");
    QTest::addColumn<QString>("digest");
    // Expected digests from coreutils md5sum / sha256sum over the UTF-8 bytes.
    const QString russian = QStringLiteral("пароль");
    QTest::addRow("md5, empty") << QString() << int(QCryptographicHash::Md5)
                                << "d41d8cd98f00b204e9800998ecf8427e";
    QTest::addRow("md5, abc") << "abc" << int(QCryptographicHash::Md5)
                              << "900150983cd24fb0d6963f7d28e17f72";
    QTest::addRow("md5, russian") << russian << int(QCryptographicHash::Md5)
                                  << "e242f36f4f95f12966da8fa2efd59992";
    QTest::addRow("sha256, empty")
        << QString() << int(QCryptographicHash::Sha256)
        << "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    QTest::addRow("sha256, abc")
        << "abc" << int(QCryptographicHash::Sha256)
        << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    QTest::addRow("sha256, russian")
        << russian << int(QCryptographicHash::Sha256)
        << "2dbc574daca52689a24fb60e835f8c19a36400830df7350859dd32d1abaaec5d";
}

void TestPasswords::encrypt()
{
    QFETCH(QString, password);
    QFETCH(int, algorithm);
    QFETCH(QString, digest);
    QCOMPARE(PassHash::encrypt(password, QCryptographicHash::Algorithm(algorithm)), digest);
}

void TestPasswords::generatedPasswordsMeetPolicy_data()
{
    QTest::addColumn<int>("minLength");
    QTest::addColumn<bool>("upper");
    QTest::addColumn<bool>("lower");
    QTest::addColumn<bool>("digit");
    QTest::addColumn<bool>("special");
    QTest::addColumn<int>("shortest"); // what the generator must produce at least; 128 at most
    QTest::addRow("defaults") << 8 << true << true << true << false << 12;
    QTest::addRow("min length 20") << 20 << true << true << true << false << 20;
    QTest::addRow("only digits required") << 8 << false << false << true << false << 12;
    QTest::addRow("special required") << 8 << true << true << true << true << 12;
    QTest::addRow("nothing required") << 8 << false << false << false << false << 12;
    QTest::addRow("min length 1") << 1 << true << false << false << false << 12;
    QTest::addRow("min length 200, clamped") << 200 << true << true << true << true << 128;
}

void TestPasswords::generatedPasswordsMeetPolicy()
{
    QFETCH(int, minLength);
    QFETCH(bool, upper);
    QFETCH(bool, lower);
    QFETCH(bool, digit);
    QFETCH(bool, special);
    QFETCH(int, shortest);
    const Options options = policy(minLength, upper, lower, digit, special);

    const int runs = 500;
    QSet<QString> seen;
    for (int i = 0; i < runs; ++i) {
        const QString password = GUIPassFuncs::generatePassword(options);
        const QByteArray printable = password.toUtf8();
        const char *text = printable.constData();
        QVERIFY2(GUIPassFuncs::unmetCriteria(password, options).isEmpty(), text);
        QVERIFY2(password.size() >= shortest && password.size() <= 128, text);
        // Typeable on any keyboard: printable ASCII, no blanks.
        QVERIFY2(!hasAny(password, [](ushort u) { return u <= 0x20 || u >= 0x7f; }), text);
        QVERIFY2(!upper || hasAny(password, [](ushort u) { return u >= 'A' && u <= 'Z'; }), text);
        QVERIFY2(!lower || hasAny(password, [](ushort u) { return u >= 'a' && u <= 'z'; }), text);
        QVERIFY2(!digit || hasAny(password, [](ushort u) { return u >= '0' && u <= '9'; }), text);
        QVERIFY2(!special || hasAny(password, [](ushort u) { return !isAsciiLetterOrDigit(u); }),
                 text);
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
    QTest::addRow("meets the usual") << "Abcdefg1" << usual << QStringList();
    QTest::addRow("one too short") << "Abcdef1" << usual << QStringList{GUIPassFuncs::MinLength};
    QTest::addRow("no upper") << "abcdefg1" << usual << QStringList{GUIPassFuncs::RequireUpper};
    QTest::addRow("no lower") << "ABCDEFG1" << usual << QStringList{GUIPassFuncs::RequireLower};
    QTest::addRow("no digit") << "Abcdefgh" << usual << QStringList{GUIPassFuncs::RequireDigit};
    QTest::addRow("no special") << "Abcdefgh12" << strict
                                << QStringList{GUIPassFuncs::RequireSpecial};
    QTest::addRow("meets the strict") << "Abcdefg1#x" << strict << QStringList();
    QTest::addRow("empty, everything unmet")
        << QString() << strict
        << QStringList{GUIPassFuncs::MinLength, GUIPassFuncs::RequireUpper,
                       GUIPassFuncs::RequireLower, GUIPassFuncs::RequireDigit,
                       GUIPassFuncs::RequireSpecial};
    QTest::addRow("nothing required")
        << "x" << policy(1, false, false, false, false) << QStringList();
}

void TestPasswords::unmetCriteria()
{
    QFETCH(QString, password);
    QFETCH(Options, options);
    QFETCH(QStringList, unmet);
    QStringList got = GUIPassFuncs::unmetCriteria(password, options);
    got.sort();
    unmet.sort();
    QCOMPARE(got, unmet);
}

void TestPasswords::optionsFromDatabase_data()
{
    using Parameters = QHash<QString, QString>;
    QTest::addColumn<bool>("withDatabase");
    QTest::addColumn<Parameters>("parameters");
    QTest::addColumn<Options>("expected");
    const QString length = QLatin1String(db::database::PASSWORD_MIN_LENGTH);
    const QString upper = QLatin1String(db::database::PASSWORD_REQUIRE_UPPER);
    const QString lower = QLatin1String(db::database::PASSWORD_REQUIRE_LOWER);
    const QString digit = QLatin1String(db::database::PASSWORD_REQUIRE_DIGIT);
    const QString special = QLatin1String(db::database::PASSWORD_REQUIRE_SPECIAL);
    const Options defaults = policy(8, true, true, true, false);

    QTest::addRow("no database object") << false << Parameters() << defaults;
    QTest::addRow("no policy settings") << true << Parameters() << defaults;
    QTest::addRow("every setting") << true
                                   << Parameters{{length, "14"},
                                                 {upper, "0"},
                                                 {lower, "false"},
                                                 {digit, "no"},
                                                 {special, "true"}}
                                   << policy(14, false, false, false, true);
    QTest::addRow("other spellings")
        << true << Parameters{{length, " 9 "}, {special, "YES"}, {upper, "1"}}
        << policy(9, true, true, true, true);
    QTest::addRow("garbage") << true
                             << Parameters{{length, "twelve"},
                                           {upper, "maybe"},
                                           {lower, "-"},
                                           {digit, "?"},
                                           {special, "perhaps"}}
                             << defaults;
    QTest::addRow("too long") << true << Parameters{{length, "500"}}
                              << policy(128, true, true, true, false);
}

void TestPasswords::optionsFromDatabase()
{
    using Parameters = QHash<QString, QString>;
    QFETCH(bool, withDatabase);
    QFETCH(Parameters, parameters);
    QFETCH(Options, expected);
    // Another object of the same dataset with settings of its own must not be read.
    QList<zeral::ObjectInfo> objects = {testing::makeObject(
        2, "OT_DEPARTMENT",
        {{"PT_PASSWORD_MIN_LENGTH", "77"}, {"PT_PASSWORD_REQUIRE_UPPER", "0"}})};
    if (withDatabase)
        objects.append(testing::makeDatabase(1, parameters));
    zeral::LocalStorage::instance()->applyChanged(QStringLiteral("db"), objects);

    const Options options = GUIPassFuncs::getPasswordOptions();
    QCOMPARE(options.keys(), expected.keys());
    QCOMPARE(options.value(GUIPassFuncs::MinLength).toInt(),
             expected.value(GUIPassFuncs::MinLength).toInt());
    for (const QString &key : {GUIPassFuncs::RequireUpper, GUIPassFuncs::RequireLower,
                               GUIPassFuncs::RequireDigit, GUIPassFuncs::RequireSpecial})
        QVERIFY2(options.value(key).toBool() == expected.value(key).toBool(), qPrintable(key));
}

QTEST_GUILESS_MAIN(TestPasswords)
#include "tst_passwords.moc"
