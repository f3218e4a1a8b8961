#include <host/core/dbresult.h>
#include <host/core/settings.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrglobals.h>
#include <shared/metatypes.h>
#include <tests/support/builders.h>

#include <QTemporaryDir>
#include <QtTest>

namespace {

// Two rows of three columns, one cell null.
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
    void objectName_data();
    void objectName();
    void settingsAndLocaleLongTime();
    void dbResultValue_data();
    void dbResultValue();
    void dbResultStream_data();
    void dbResultStream();
};

void TestGlobals::objectName_data()
{
    QTest::addColumn<zeral::ObjectInfo>("object");
    QTest::addColumn<QString>("expected");
    using testing::makeWorker;
    zeral::ObjectInfo user = testing::makeUser(1, "ivanov");
    user.parameters.insert(QStringLiteral("PT_NAME"), "Иван");
    QTest::addRow("user: login") << user << "ivanov";
    QTest::addRow("user without login") << testing::makeUser(2, {}) << "";
    QTest::addRow("worker: full name")
        << makeWorker(3, "Иванов", "Иван", "Иванович") << "Иванов Иван Иванович";
    QTest::addRow("worker, no first name")
        << makeWorker(6, "Сидоров", {}, "Олегович") << "Сидоров Олегович";
    QTest::addRow("worker, blank parts")
        << makeWorker(7, " Сидоров ", "  ", "Олегович") << "Сидоров Олегович";
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

void TestGlobals::settingsAndLocaleLongTime()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString file = dir.filePath(QStringLiteral("studio.ini"));
    const QString language = QStringLiteral("mainwindow/language");
    Settings::useFile(file);

    // The setting picks the language whatever the system's locale.
    const QDateTime moment(QDate(2024, 3, 8), QTime(14, 30, 5));
    Settings::setValue(language, QStringLiteral("ru_RU"));
    const QString russian = zeral::localeLongTime(moment);
    QVERIFY2(russian.contains(QStringLiteral("марта 2024")), qPrintable(russian));
    Settings::setValue(language, QStringLiteral("en_US"));
    const QString english = zeral::localeLongTime(moment);
    QVERIFY2(english.contains(QStringLiteral("March")), qPrintable(english));

    Settings::useFile(file); // writes the last store out; the new one reads the file
    QCOMPARE(Settings::value(language).toString(), QStringLiteral("en_US"));
}

void TestGlobals::dbResultValue_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("expected");
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
}

void TestGlobals::dbResultStream_data()
{
    QTest::addColumn<qint32>("rows");
    QTest::addColumn<qint32>("columns");
    QTest::addColumn<int>("cells");
    QTest::addColumn<bool>("readable");
    QTest::addRow("counts match") << 2 << 3 << 6 << true;
    QTest::addRow("no rows") << 0 << 3 << 0 << true;
    QTest::addRow("one cell missing") << 2 << 3 << 5 << false;
    QTest::addRow("rows without columns") << 3 << 0 << 1 << false;
    QTest::addRow("negative rows") << -1 << 0 << 0 << false;
    QTest::addRow("negative both") << -2 << -2 << 4 << false;
}

void TestGlobals::dbResultStream()
{
    QFETCH(qint32, rows);
    QFETCH(qint32, columns);
    QFETCH(int, cells);
    QFETCH(bool, readable);
    DbResult written = table();
    written.rowCount = rows;
    written.columnCount = columns;
    written.values.resize(cells);
    ZRDataStream in(ZRDataStream::pack(written));
    DbResult read;
    read.values = {QStringLiteral("what it held before")};
    in >> read;
    QCOMPARE(in.status() == QDataStream::Ok, readable);
    QVERIFY(read == (readable ? written : DbResult()));
}

QTEST_GUILESS_MAIN(TestGlobals)
#include "tst_globals.moc"
