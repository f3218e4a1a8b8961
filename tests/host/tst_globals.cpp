#include <host/core/authdata.h>
#include <host/core/dbresult.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrglobals.h>
#include <shared/dbkeys.h>
#include <shared/metatypes.h>
#include <shared/rolenames.h>
#include <tests/support/builders.h>

#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

const QString LanguageKey = QStringLiteral("mainwindow/language");

bool hasCyrillic(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(),
                       [](QChar c) { return c.unicode() >= 0x0400 && c.unicode() <= 0x04ff; });
}

DbResult table()
{
    DbResult result;
    result.rowCount = 2;
    result.columnCount = 3;
    result.values = {1, QStringLiteral("Иванов"), QVariant(), 2, QStringLiteral("Петров"), 3.5};
    result.columnNames
        = QStringList{QStringLiteral("uid"), QStringLiteral("surname"), QStringLiteral("rate")};
    return result;
}

} // namespace

class TestGlobals : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void objectName_data();
    void objectName();
    void convertHash();
    void roleTemplateNames();
    void deviceLists();
    void localeLongTime_data();
    void localeLongTime();
    void settingsRoundTrip_data();
    void settingsRoundTrip();
    void authData();
    void dbResultValue_data();
    void dbResultValue();
    void dbResultStream();
    void dbResultCountsMismatch_data();
    void dbResultCountsMismatch();

private:
    QTemporaryDir m_dir;
    QString m_iniFile;
};

void TestGlobals::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_iniFile = m_dir.filePath(QStringLiteral("studio.ini"));
    Settings::useFile(m_iniFile);
}

void TestGlobals::objectName_data()
{
    QTest::addColumn<zeral::ObjectInfo>("object");
    QTest::addColumn<QString>("expected");
    using testing::makeWorker;
    zeral::ObjectInfo user = testing::makeUser(1, "ivanov");
    user.parameters.insert(QLatin1String(db::user::NAME), "Иван");
    QTest::addRow("user: login") << user << "ivanov";
    QTest::addRow("user without login") << testing::makeUser(2, {}) << "";
    QTest::addRow("worker, full") << makeWorker(3, "Иванов", "Иван", "Иванович")
                                  << "Иванов Иван Иванович";
    QTest::addRow("worker, no patronymic") << makeWorker(4, "Петров", "Пётр") << "Петров Пётр";
    QTest::addRow("worker, no surname")
        << makeWorker(5, {}, "Анна", "Сергеевна") << "Анна Сергеевна";
    QTest::addRow("worker, no first name")
        << makeWorker(6, "Сидоров", {}, "Олегович") << "Сидоров Олегович";
    QTest::addRow("worker, blank parts")
        << makeWorker(7, " Сидоров ", "  ", "Олегович") << "Сидоров Олегович";
    QTest::addRow("worker, nothing") << makeWorker(8, {}, {}) << "";
    QTest::addRow("department: name")
        << testing::makeObject(9, "OT_DEPARTMENT", {{"PT_NAME", "Бухгалтерия"}, {"PT_LOGIN", "x"}})
        << "Бухгалтерия";
}

void TestGlobals::objectName()
{
    QFETCH(zeral::ObjectInfo, object);
    QFETCH(QString, expected);
    QCOMPARE(ZRGlobals::objectName(object), expected);
    QCOMPARE(ZRGlobals::objectName(object.type, object.parameters), expected);
}

void TestGlobals::convertHash()
{
    const QHash<QString, QVariant> hash = {
        {"int", 42}, {"bool", true}, {"text", "текст"}, {"date", QDate(2024, 2, 29)}, {"null", {}}};
    const QHash<QString, QString> expected = {
        {"int", "42"}, {"bool", "true"}, {"text", "текст"}, {"date", "2024-02-29"}, {"null", {}}};
    QCOMPARE(ZRGlobals::convertHash(hash), expected);
}

void TestGlobals::roleTemplateNames()
{
    const QHash<QString, QString> &names = ZRGlobals::roleTemplateNames();
    for (const char *id : {zeral::roletemplate::SUPERVISOR, zeral::roletemplate::ADMINISTRATOR,
                           zeral::roletemplate::MOBILE, zeral::roletemplate::MOBILE_CHIEF}) {
        const QString text = names.value(QLatin1String(id));
        QVERIFY2(hasCyrillic(text), id);
    }
}

void TestGlobals::deviceLists()
{
    const QList<QStringList> lists
        = {ZRGlobals::relayDevices(), ZRGlobals::videoDevices(), ZRGlobals::videoServerDevices(),
           ZRGlobals::accessShowDevices()};
    QSet<QString> all;
    int total = 0;
    for (const QStringList &list : lists) {
        QVERIFY(!list.isEmpty());
        QVERIFY(!list.contains(QStringLiteral("OT_TERM_ZR_NOVA_E")));
        total += list.size();
        all.unite(QSet<QString>(list.cbegin(), list.cend()));
    }
    QCOMPARE(all.size(), total); // no type in two lists, nor twice in one
}

void TestGlobals::localeLongTime_data()
{
    QTest::addColumn<QString>("language");
    QTest::addRow("russian") << "ru_RU";
    QTest::addRow("english") << "en_US";
}

void TestGlobals::localeLongTime()
{
    QFETCH(QString, language);
    const QDateTime moment(QDate(2024, 3, 8), QTime(14, 30, 5));
    Settings::setValue(LanguageKey, language);
    const QString text = zeral::localeLongTime(moment);
    QCOMPARE(text, QLocale(language).toString(moment, QLocale::LongFormat));

    // Another language must give another text: the setting is really read.
    const QString other
        = language == QLatin1String("ru_RU") ? QStringLiteral("en_US") : QStringLiteral("ru_RU");
    Settings::setValue(LanguageKey, other);
    QVERIFY(zeral::localeLongTime(moment) != text);
    Settings::instance()->remove(LanguageKey);
}

void TestGlobals::settingsRoundTrip_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addRow("russian text") << "mainwindow/title" << QVariant(QStringLiteral("Пропуска"));
    QTest::addRow("number") << "connection/port" << QVariant(7010);
    QTest::addRow("flag") << "connection/tls" << QVariant(true);
    QTest::addRow("list") << "recent/hosts"
                          << QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b, c")});
}

void TestGlobals::settingsRoundTrip()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    const QVariant fallback(QStringLiteral("fallback"));
    QCOMPARE(Settings::value(key, fallback), fallback);

    Settings::setValue(key, value);
    QVariant read = Settings::value(key);
    QVERIFY(read.convert(value.userType()));
    QCOMPARE(read, value);

    // Through the file: a fresh store over the same file reads the same value.
    Settings::useFile(m_iniFile);
    read = Settings::value(key);
    QVERIFY(read.convert(value.userType()));
    QCOMPARE(read, value);
    Settings::instance()->remove(key);
}

void TestGlobals::authData()
{
    const AuthData::Identity identity{"operator",
                                      314,
                                      "abc123",
                                      "RT_ADMINISTRATOR",
                                      QStringList{"RL_USER_SHOW", "RL_USER_CREATE"},
                                      "e242f3"};
    AuthData::set(identity);
    QVERIFY(AuthData::isLoggedIn());
    QCOMPARE(AuthData::user(), identity.user);
    QCOMPARE(AuthData::userId(), identity.userId);
    QCOMPARE(AuthData::sessionId(), identity.sessionId);
    QCOMPARE(AuthData::roletemplateId(), identity.roletemplateId);
    QCOMPARE(AuthData::roles(), identity.roles);
    QCOMPARE(AuthData::passwdHash(), identity.passwdHash);

    AuthData::clear();
    QVERIFY(!AuthData::isLoggedIn());
    QVERIFY(AuthData::user().isEmpty() && AuthData::sessionId().isEmpty());
    QVERIFY(AuthData::roles().isEmpty() && AuthData::passwdHash().isEmpty());
    QCOMPARE(AuthData::userId(), 0u);
}

void TestGlobals::dbResultValue_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("expected");
    QTest::addRow("first cell") << 0 << 0 << QVariant(1);
    QTest::addRow("a null cell") << 0 << 2 << QVariant();
    QTest::addRow("row 1, column 1") << 1 << 1 << QVariant(QStringLiteral("Петров"));
    QTest::addRow("row past the end") << 2 << 0 << QVariant();
    QTest::addRow("column past the end") << 0 << 3 << QVariant();
    QTest::addRow("negative column") << 1 << -1 << QVariant();
}

void TestGlobals::dbResultValue()
{
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(QVariant, expected);
    const QVariant got = table().value(row, column);
    QCOMPARE(got.isValid(), expected.isValid());
    QCOMPARE(got, expected);
    QVERIFY(!DbResult().value(0, 0).isValid());
}

void TestGlobals::dbResultStream()
{
    DbResult original = table();
    original.values << QDateTime(QDate(2024, 1, 2), QTime(3, 4), Qt::UTC) << QByteArray("\0x", 2)
                    << (qint64(1) << 40);
    original.rowCount = 3;
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << original;

    ZRDataStream in(bytes);
    DbResult read;
    in >> read;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY(in.atEnd());
    QVERIFY(read == original);
    QCOMPARE(read.value(2, 1), QVariant(QByteArray("\0x", 2)));
}

void TestGlobals::dbResultCountsMismatch_data()
{
    QTest::addColumn<qint32>("rows");
    QTest::addColumn<qint32>("columns");
    QTest::addColumn<int>("cells");
    QTest::addRow("one cell missing") << 2 << 2 << 3;
    QTest::addRow("rows without columns") << 3 << 0 << 1;
    QTest::addRow("negative rows") << -1 << 0 << 0;
    QTest::addRow("negative both") << -2 << -2 << 4;
}

void TestGlobals::dbResultCountsMismatch()
{
    QFETCH(qint32, rows);
    QFETCH(qint32, columns);
    QFETCH(int, cells);
    QByteArray bytes;
    ZRDataStream out(&bytes, QIODevice::WriteOnly);
    out << rows << columns << QVector<QVariant>(cells, QVariant(7))
        << QStringList{QStringLiteral("a")};

    ZRDataStream in(bytes);
    DbResult read = table(); // whatever it held before
    in >> read;
    QVERIFY(in.status() != QDataStream::Ok);
    QVERIFY(read == DbResult());
}

QTEST_GUILESS_MAIN(TestGlobals)
#include "tst_globals.moc"
