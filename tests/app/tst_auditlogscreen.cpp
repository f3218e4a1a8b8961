// The audit log screen against a scripted server: the right that shows it, the filter bar
// as the request's payload, pages as the view scrolls, pushed rows, refusals, and the CSV
// export with its quoting.

#include <app/screens/auditlogmodel.h>
#include <app/screens/auditlogscreen.h>
#include <app/screens/csvwriter.h>
#include <host/core/authdata.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <shared/auditfilter.h>
#include <shared/auditrecord.h>
#include <shared/rolenames.h>
#include <tests/support/scriptedserver.h>

#include <QAbstractItemModelTester>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(zeral::AuditFilter)

using zeral::AuditFilter;
using zeral::AuditRecord;
namespace proto = zeral::proto;
namespace cmd = zeral::proto::command;

namespace {

const QDateTime base(QDate(2026, 5, 4), QTime(9, 30), Qt::UTC);

AuditRecord row(qint64 id, const QString &objectName = QStringLiteral("Иванова Анна (ivanova)"),
                qint32 status = proto::StatusOk)
{
    AuditRecord record;
    record.id = id;
    record.at = base.addSecs(id);
    record.operatorLogin = QStringLiteral("clerk");
    record.peer = QStringLiteral("10.0.0.5");
    record.command = QLatin1String(cmd::UpdateObject);
    record.object = 500;
    record.objectName = objectName;
    record.status = status;
    return record;
}

// Rows `from` down to `from - count + 1`, newest first, as the server pages them.
QList<AuditRecord> rows(qint64 from, int count)
{
    QList<AuditRecord> result;
    for (int i = 0; i < count; ++i)
        result.append(row(from - i));
    return result;
}

struct Request
{
    qint64 beforeId = -1;
    qint32 pageSize = 0;
    AuditFilter filter;
};

Request readRequest(const Command &command)
{
    Request request;
    ZRDataStream in(command.data);
    in >> request.beforeId >> request.pageSize >> request.filter;
    return in.status() == QDataStream::Ok && in.atEnd() ? request : Request();
}

} // namespace

class TestAuditLogScreen : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void shownOnlyWithTheRight();
    void filterBarIsTheRequest_data();
    void filterBarIsTheRequest();
    void pagesComeAsTheViewScrolls();
    void pushedRowsComeInAtTheTop_data();
    void pushedRowsComeInAtTheTop();
    void pushDuringTheFirstPageIsNotDoubled();
    void refusalIsShown();
    void csvFieldsAreQuoted_data();
    void csvFieldsAreQuoted();
    void fetchAllReadsEveryPage();
    void exportWritesEveryRowOfTheFilter();

private:
    // Answers the page request sent last.
    void answerPage(const QList<AuditRecord> &page, bool more);

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<AuditLogScreen> m_screen;
};

void TestAuditLogScreen::init()
{
    AuthData::set({"auditor", 7, "s", QString(), {zeral::role::AUDIT_SHOW}, QString()});
    m_server = std::make_unique<ScriptedServer>();
    m_screen = std::make_unique<AuditLogScreen>();
    m_screen->init(m_server.get(), QStringLiteral("auditlog"));
    // The tester calls fetchMore on every change of the model; the case that shows the view
    // asking for pages as it scrolls runs without it.
    if (qstrcmp(QTest::currentTestFunction(), "pagesComeAsTheViewScrolls") != 0)
        new QAbstractItemModelTester(m_screen->model(),
                                     QAbstractItemModelTester::FailureReportingMode::QtTest,
                                     m_screen.get());
    m_screen->resize(1000, 600);
    m_screen->show();
}

void TestAuditLogScreen::cleanup()
{
    m_screen.reset();
    m_server.reset();
    AuthData::clear();
}

void TestAuditLogScreen::answerPage(const QList<AuditRecord> &page, bool more)
{
    const Command request = m_server->lastSent(QLatin1String(cmd::AuditLog));
    QVERIFY(request.id != 0);
    m_server->answerOk(request, ZRDataStream::pack(page, more));
}

void TestAuditLogScreen::shownOnlyWithTheRight()
{
    AuthData::set({"hr",
                   7,
                   "s",
                   QString(),
                   {zeral::role::USER_UPDATE, zeral::role::SYSTEM_LOG_SHOW},
                   QString()});
    QVERIFY(!m_screen->canShow());
    AuthData::set({"auditor", 7, "s", QString(), {zeral::role::AUDIT_SHOW}, QString()});
    QVERIFY(m_screen->canShow());
    QCOMPARE(m_screen->tabList().value(0).name, QStringLiteral("Журнал действий"));
}

void TestAuditLogScreen::filterBarIsTheRequest_data()
{
    QTest::addColumn<QString>("login");
    QTest::addColumn<QString>("object");
    QTest::addColumn<int>("action"); // row of the action box
    QTest::addColumn<int>("result"); // row of the result box
    QTest::addColumn<bool>("withFrom");
    QTest::addColumn<bool>("withTo");
    QTest::addColumn<AuditFilter>("expected");

    const QDateTime from(QDate(2026, 5, 1), QTime(8, 0));
    const QDateTime to(QDate(2026, 5, 3), QTime(18, 0));
    AuditFilter everything;
    QTest::addRow("nothing chosen") << ""
                                    << "  " << 0 << 0 << false << false << everything;
    AuditFilter some;
    some.operatorLogin = QStringLiteral("clerk");
    some.object = QStringLiteral("Иванова");
    some.command = AuditLogModel::knownActions().at(4);
    some.result = AuditFilter::RefusalsOnly;
    QTest::addRow("text, action, refusals") << " clerk "
                                            << "Иванова" << 5 << 2 << false << false << some;
    AuditFilter period;
    period.result = AuditFilter::SuccessOnly;
    period.from = from.toUTC();
    period.to = to.toUTC();
    QTest::addRow("a period of successes") << ""
                                           << "" << 0 << 1 << true << true << period;
    AuditFilter since;
    since.object = QStringLiteral("500");
    since.from = from.toUTC();
    QTest::addRow("an object since") << ""
                                     << "500" << 0 << 0 << true << false << since;
}

void TestAuditLogScreen::filterBarIsTheRequest()
{
    QFETCH(QString, login);
    QFETCH(QString, object);
    QFETCH(int, action);
    QFETCH(int, result);
    QFETCH(bool, withFrom);
    QFETCH(bool, withTo);
    QFETCH(AuditFilter, expected);

    m_screen->operatorEdit()->setText(login);
    m_screen->objectEdit()->setText(object);
    m_screen->actionBox()->setCurrentIndex(action);
    m_screen->resultBox()->setCurrentIndex(result);
    m_screen->fromCheck()->setChecked(withFrom);
    m_screen->fromEdit()->setDateTime(QDateTime(QDate(2026, 5, 1), QTime(8, 0)));
    m_screen->toCheck()->setChecked(withTo);
    m_screen->toEdit()->setDateTime(QDateTime(QDate(2026, 5, 3), QTime(18, 0)));
    QCOMPARE(m_screen->fromEdit()->isEnabled(), withFrom);
    QTest::mouseClick(m_screen->findChild<QPushButton *>(QStringLiteral("auditApplyFilter")),
                      Qt::LeftButton);

    const Request sent = readRequest(m_server->lastSent(QLatin1String(cmd::AuditLog)));
    QCOMPARE(sent.beforeId, qint64(0));
    QCOMPARE(sent.pageSize, AuditLogModel::PageSize);
    QCOMPARE(sent.filter, expected);
    QCOMPARE(m_server->lastSent(QLatin1String(cmd::AuditLog)).sessionId, QByteArray("s"));
}

void TestAuditLogScreen::pagesComeAsTheViewScrolls()
{
    AuditLogModel *model = m_screen->model();
    m_screen->activated();
    QCOMPARE(m_server->sent().size(), 1);
    QVERIFY(!model->canFetchMore({})); // one page at a time
    answerPage(rows(1000, AuditLogModel::PageSize), true);
    QCOMPARE(model->rowCount(), int(AuditLogModel::PageSize));
    QCOMPARE(model->index(0, AuditLogModel::ObjectColumn).data().toString(),
             QStringLiteral("Иванова Анна (ivanova)"));
    QCOMPARE(model->index(0, AuditLogModel::ActionColumn).data().toString(),
             QStringLiteral("Изменение объекта"));
    QCOMPARE(model->index(0, AuditLogModel::ResultColumn).data().toString(),
             QStringLiteral("Выполнено"));
    QVERIFY(model->canFetchMore({}));

    // Scrolling to the end asks for the rows below the last one.
    m_screen->view()->scrollToBottom();
    QTRY_COMPARE(m_server->sent().size(), 2);
    const Request next = readRequest(m_server->sent().constLast());
    QCOMPARE(next.beforeId, qint64(1000 - AuditLogModel::PageSize + 1));
    answerPage(rows(1000 - AuditLogModel::PageSize, 30), false);
    QCOMPARE(model->rowCount(), int(AuditLogModel::PageSize) + 30);
    QVERIFY(!model->canFetchMore({}));
    QCOMPARE(model->record(model->rowCount() - 1).id, qint64(1000 - AuditLogModel::PageSize - 29));
    QVERIFY(m_screen->statusLabel()->text().contains(QStringLiteral("все строки")));
    m_screen->view()->scrollToBottom();
    QCoreApplication::processEvents();
    QCOMPARE(m_server->sent().size(), 2); // the end: nothing more asked
}

void TestAuditLogScreen::pushedRowsComeInAtTheTop_data()
{
    QTest::addColumn<QString>("operatorFilter");
    QTest::addColumn<qint64>("pushedId");
    QTest::addColumn<QString>("pushedOperator");
    QTest::addColumn<bool>("shown");
    QTest::addRow("new row") << "" << qint64(11) << "clerk" << true;
    QTest::addRow("new row of the operator filtered") << "CLERK" << qint64(11) << "clerk" << true;
    QTest::addRow("another operator's") << "clerk" << qint64(11) << "root" << false;
    QTest::addRow("a row already shown") << "" << qint64(10) << "clerk" << false;
}

void TestAuditLogScreen::pushedRowsComeInAtTheTop()
{
    QFETCH(QString, operatorFilter);
    QFETCH(qint64, pushedId);
    QFETCH(QString, pushedOperator);
    QFETCH(bool, shown);
    m_screen->operatorEdit()->setText(operatorFilter);
    m_screen->applyFilter();
    answerPage(rows(10, 10), false);
    QSignalSpy inserted(m_screen->model(), &QAbstractItemModel::rowsInserted);

    AuditRecord pushed
        = row(pushedId, QStringLiteral("Петров Пётр (petrov)"), proto::StatusForbidden);
    pushed.operatorLogin = pushedOperator;
    pushed.confirmedBy = QStringLiteral("guard");
    m_server->push(QLatin1String(cmd::AuditAppended), ZRDataStream::pack(pushed));
    QCOMPARE(inserted.size(), shown ? 1 : 0);
    QCOMPARE(m_screen->model()->rowCount(), shown ? 11 : 10);
    if (!shown)
        return;
    const QAbstractItemModel *model = m_screen->model();
    QCOMPARE(model->index(0, AuditLogModel::ObjectColumn).data().toString(),
             QStringLiteral("Петров Пётр (petrov)"));
    QCOMPARE(model->index(0, AuditLogModel::ResultColumn).data().toString(),
             QStringLiteral("Отказано (код 4)"));
    QCOMPARE(model->index(0, AuditLogModel::ConfirmedByColumn).data().toString(),
             QStringLiteral("guard"));
    QCOMPARE(model->index(0, AuditLogModel::OperatorColumn).data().toString(), pushedOperator);
}

void TestAuditLogScreen::pushDuringTheFirstPageIsNotDoubled()
{
    m_screen->applyFilter();
    // The server pushed row 11 before it read the page, so the page holds it too.
    m_server->push(QLatin1String(cmd::AuditAppended), ZRDataStream::pack(row(11)));
    answerPage(rows(11, 11), false);
    QCOMPARE(m_screen->model()->rowCount(), 11);
    QCOMPARE(m_screen->model()->record(0).id, qint64(11));
    QCOMPARE(m_screen->model()->record(1).id, qint64(10));
}

void TestAuditLogScreen::refusalIsShown()
{
    QSignalSpy failed(m_screen->model(), &AuditLogModel::failed);
    m_screen->applyFilter();
    const QString text = QStringLiteral("Недостаточно прав для просмотра журнала действий.");
    m_server->answerFailure(m_server->lastSent(QLatin1String(cmd::AuditLog)),
                            proto::StatusForbidden, text);
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed.at(0).at(0).toString(), text);
    QCOMPARE(m_screen->statusLabel()->text(), text);
    QVERIFY(!m_screen->model()->canFetchMore({}));

    // A period that ends before it starts is not even sent.
    m_server->clearSent();
    m_screen->fromCheck()->setChecked(true);
    m_screen->toCheck()->setChecked(true);
    m_screen->toEdit()->setDateTime(m_screen->fromEdit()->dateTime().addSecs(-60));
    m_screen->applyFilter();
    QVERIFY(m_server->sent().isEmpty());
    QVERIFY(m_screen->statusLabel()->text().contains(QStringLiteral("раньше")));
}

void TestAuditLogScreen::csvFieldsAreQuoted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("field");
    QTest::addRow("plain") << "Иванова Анна"
                           << "Иванова Анна";
    QTest::addRow("empty") << ""
                           << "";
    QTest::addRow("comma") << "Иванова, Анна"
                           << "\"Иванова, Анна\"";
    QTest::addRow("quotes") << "ООО \"Север\""
                            << "\"ООО \"\"Север\"\"\"";
    QTest::addRow("only a quote") << "\""
                                  << "\"\"\"\"";
    QTest::addRow("line break") << "две\nстроки"
                                << "\"две\nстроки\"";
    QTest::addRow("CRLF") << "две\r\nстроки"
                          << "\"две\r\nстроки\"";
    QTest::addRow("space at the end") << "ivanova "
                                      << "\"ivanova \"";
    QTest::addRow("semicolon stays") << "a;b"
                                     << "a;b";
}

void TestAuditLogScreen::csvFieldsAreQuoted()
{
    QFETCH(QString, text);
    QFETCH(QString, field);
    QCOMPARE(CsvWriter::field(text), field);
    QCOMPARE(CsvWriter::line({text, text}), field + ',' + field + "\r\n");
}

void TestAuditLogScreen::fetchAllReadsEveryPage()
{
    // A model of its own, without a view or a tester that would fetch on their own.
    AuditLogModel model(m_server.get());
    m_server->clearSent();
    model.setFilter({});
    QCOMPARE(m_server->sent().size(), 1);
    answerPage({row(3)}, true);
    QTRY_COMPARE(model.rowCount(), 1);
    QCOMPARE(m_server->sent().size(), 1); // nobody asked for more

    QList<bool> outcomes;
    model.fetchAll([&](bool complete) { outcomes.append(complete); });
    QCOMPARE(m_server->sent().size(), 2);
    QCOMPARE(readRequest(m_server->sent().constLast()).beforeId, qint64(3));
    answerPage({row(2)}, true);
    QTRY_COMPARE(m_server->sent().size(), 3);
    QCOMPARE(readRequest(m_server->sent().constLast()).beforeId, qint64(2));
    answerPage({row(1)}, false);
    QTRY_COMPARE(outcomes, QList<bool>{true});
    QCOMPARE(model.rowCount(), 3);

    // A refusal half-way ends it as incomplete.
    model.setFilter({});
    answerPage({row(3)}, true);
    QTRY_COMPARE(model.rowCount(), 1);
    model.fetchAll([&](bool complete) { outcomes.append(complete); });
    m_server->answerFailure(m_server->lastSent(QLatin1String(cmd::AuditLog)),
                            proto::StatusMalformed, QStringLiteral("Страница слишком велика."));
    QTRY_COMPARE(outcomes, (QList<bool>{true, false}));
}

void TestAuditLogScreen::exportWritesEveryRowOfTheFilter()
{
    AuditRecord tricky = row(3, QStringLiteral("ООО \"Север, Юг\"\nфилиал"), proto::StatusConflict);
    tricky.detail = QStringLiteral("login \"a,b\" in use");
    const QHash<qint64, QPair<QList<AuditRecord>, bool>> pages = {
        {0, {{tricky}, true}},
        {3, {{row(2)}, true}},
        {2, {{row(1, QStringLiteral("Простое имя"))}, false}},
    };
    m_server->script(QLatin1String(cmd::AuditLog), [&pages](const Command &request) {
        const auto page = pages.value(readRequest(request).beforeId);
        return Command::answer(request, proto::StatusOk,
                               ZRDataStream::pack(page.first, page.second));
    });
    m_screen->applyFilter();
    QTRY_VERIFY(m_screen->model()->rowCount() > 0);

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("журнал.csv"));
    QSignalSpy exported(m_screen.get(), &AuditLogScreen::exported);
    m_screen->exportTo(path);
    QTRY_COMPARE(exported.size(), 1);
    QCOMPARE(exported.at(0).at(1).toInt(), 3);
    // Each page once.
    QList<qint64> asked;
    for (const Command &request : m_server->sent())
        asked.append(readRequest(request).beforeId);
    QCOMPARE(asked, (QList<qint64>{0, 3, 2}));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QVERIFY(bytes.startsWith("\xEF\xBB\xBF"));
    const QString text = QString::fromUtf8(bytes.mid(3));
    const QString local
        = base.addSecs(3).toLocalTime().toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    const QString expectedStart
        = QStringLiteral(
              "Время,Оператор,Адрес,Действие,Объект,Результат,Подтвердил,Подробности\r\n")
          + local
          + QStringLiteral(",clerk,10.0.0.5,Изменение объекта,\"ООО \"\"Север, Юг\"\"\nфилиал\","
                           "Отказано (код 6),,\"login \"\"a,b\"\" in use\"\r\n");
    QVERIFY2(text.startsWith(expectedStart), qPrintable(text));
    QCOMPARE(text.count(QStringLiteral("\r\n")), 4);
    QVERIFY(text.endsWith(QStringLiteral(",Простое имя,Выполнено,,\r\n")));
}

QTEST_MAIN(TestAuditLogScreen)
#include "tst_auditlogscreen.moc"
