// The users screen's task queue as its windows use it: one request at a time, the start
// messages, the receivers told later, the tasks a failure takes with it, and the exact
// request each kind of task sends.
#include "userctlharness.h"

#include <shared/emailmessage.h>
#include <shared/inheritdata.h>
#include <shared/metatypes.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

using zeral::TaskInfo;

// A window waiting for the outcome of its tasks.
class Receiver : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void objectUpdated(zeral::TYPE_ID uid) { told.append(uid); }
    QList<TYPE_ID> told;
};

namespace {

// A task whose start message is its label and whose error message is "!" and the label.
TaskInfo task(const QString &label, const QString &type, TYPE_ID uid,
              const QList<QPair<QString, QVariant>> &data = {},
              const QList<TaskInfo> &subtasks = {})
{
    TaskInfo made;
    made.type = type;
    made.uid = uid;
    made.method = QStringLiteral("objectUpdated");
    made.startMessage = label;
    made.errorMessage = QLatin1Char('!') + label;
    for (const auto &entry : data)
        made.data.insert(entry.first, entry.second);
    made.subtasks = subtasks;
    return made;
}
TaskInfo save(const QString &label, TYPE_ID uid, const QList<TaskInfo> &subtasks = {})
{
    return task(label, QStringLiteral("save_object"), uid,
                {{QStringLiteral("object_type"), QStringLiteral("OT_USER")}}, subtasks);
}
TaskInfo after(TaskInfo task, const TaskInfo &dependency)
{
    task.dependsOn << dependency.id;
    return task;
}

void addTo(UserCtl *screen, TaskInfo task, Receiver *receiver)
{
    task.receiver = receiver;
    for (TaskInfo &subtask : task.subtasks)
        subtask.receiver = receiver;
    screen->addTask(task);
}

const auto showMessage = qOverload<QString>(&UserCtl::showMessage);

} // namespace

class TestUserCtlQueue : public QObject
{
    Q_OBJECT
private slots:
    // Failures are expected here; their warnings would only clutter the output.
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }

    // The tasks go in at once; then each answer in `answers` ('o' well, 'f' a failure) goes
    // to the one request in flight.
    void runs_data()
    {
        QTest::addColumn<QList<TaskInfo>>("tasks");
        QTest::addColumn<QString>("answers");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QList<TYPE_ID>>("told");

        QTest::addRow("arrival order")
            << QList<TaskInfo>{save("A", 5), save("B", 6), save("C", 5)} << "ooo"
            << QStringList{"A", "B", "C"} << QList<TYPE_ID>{5, 6, 5};
        const TaskInfo failing = save("A", 5);
        QTest::addRow("failure drops same uid and dependents only")
            << QList<TaskInfo>{failing, task("B", "prescribe", 5), save("C", 6),
                               after(save("D", 7), failing), save("E", 8)}
            << "foo" << QStringList{"A", "!A", "C", "E"} << QList<TYPE_ID>{0, 6, 8};
        TaskInfo unheard = save("A", 5);
        unheard.method.clear();
        QTest::addRow("failure without receiver")
            << QList<TaskInfo>{unheard, save("B", 5), save("C", 9)} << "fo"
            << QStringList{"A", "!A", "C"} << QList<TYPE_ID>{9};
        const TaskInfo unknown = task("V", "bogus", 3);
        QTest::addRow("unknown kind at the head")
            << QList<TaskInfo>{task("U", "bogus", 3),        save("A", 1), unknown, save("B", 3),
                               after(save("D", 5), unknown), save("C", 4)}
            << "oo" << QStringList{"A", "C"} << QList<TYPE_ID>{1, 4};
        QTest::addRow("subtasks first, a failing one keeps its parent, queued behind")
            << QList<TaskInfo>{save("P", 1, {save("S", 2), save("T", 3)}), save("Q", 4)} << "fooo"
            << QStringList{"S", "!S", "T", "P", "Q"} << QList<TYPE_ID>{0, 3, 1, 4};
        QTest::addRow("failed subtask on its parent's uid")
            << QList<TaskInfo>{save("P", 10, {save("S", 10), save("T", 12)}), save("Q", 13)} << "fo"
            << QStringList{"S", "!S", "Q"} << QList<TYPE_ID>{0, 13};
        QTest::addRow("new objects count as one")
            << QList<TaskInfo>{task("A", "create_object", 0), save("B", 0), save("C", 4)} << "fo"
            << QStringList{"A", "!A", "C"} << QList<TYPE_ID>{0, 4};
    }
    void runs()
    {
        QFETCH(QList<TaskInfo>, tasks);
        QFETCH(QString, answers);
        QFETCH(QList<TYPE_ID>, told);
        UserCtlHarness h;
        QSignalSpy shown(h.screen.data(), showMessage);
        Receiver receiver;
        const int before = h.server.sent().size();
        for (const TaskInfo &queued : qAsConst(tasks))
            addTo(h.screen, queued, &receiver);
        for (int i = 0; i < answers.size(); ++i) {
            const QList<Command> requests = h.server.sent().mid(before);
            QCOMPARE(requests.size(), i + 1);
            const QList<TYPE_ID> toldBefore = receiver.told;
            if (answers.at(i) == QLatin1Char('o'))
                h.server.answerOk(requests.last());
            else
                h.server.answerFailure(requests.last(), zeral::proto::StatusForbidden, "no");
            QCOMPARE(receiver.told, toldBefore); // told from the event loop, not from the handler
        }
        QCOMPARE(h.server.sent().size() - before, answers.size());
        QStringList texts;
        for (const QList<QVariant> &arguments : qAsConst(shown))
            texts.append(arguments.at(0).toString());
        QTEST(texts, "shown");
        QTRY_COMPARE(receiver.told, told);
    }

    void receiverGoneWhileItsTaskRuns()
    {
        UserCtlHarness h;
        auto *gone = new Receiver;
        Receiver stays;
        addTo(h.screen, save("A", 5), gone);
        addTo(h.screen, save("B", 6), &stays);
        delete gone;
        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        h.server.answerOk(h.sent(command::UpdateObject).value(1));
        QTRY_COMPARE(stays.told, QList<TYPE_ID>{6});
    }

    // The clipboard task ends from the event loop; a late end finds the queue empty.
    void clipboardAndAnEndWithEmptyQueue()
    {
        UserCtlHarness h;
        Receiver receiver;
        addTo(h.screen, task("A", "save_to_clipboard", 4, {{"text", "secret text"}}), &receiver);
        addTo(h.screen, save("B", 5), nullptr);
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("secret text"));
        QVERIFY(h.sent(command::UpdateObject).isEmpty());
        QTRY_COMPARE(h.sent(command::UpdateObject).size(), 1);
        // Told by a queued call posted in the same pass that sent the next request.
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{4});

        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        // Nothing is taken off an empty queue: not even a task id is used up, nothing said.
        QSignalSpy said(h.screen.data(), qOverload<QString>(&UserCtl::showMessage));
        const qint64 nextId = zeral::TaskInfo::_nextid;
        QVERIFY(QMetaObject::invokeMethod(h.screen, "saveClipboardHandler"));
        QCoreApplication::processEvents();
        QCOMPARE(receiver.told, QList<TYPE_ID>{4});
        QCOMPARE(zeral::TaskInfo::_nextid.load(), nextId);
        QCOMPARE(said.count(), 0);
    }

    void saveAndCreatePayloads()
    {
        UserCtlHarness h;
        Receiver receiver;
        const QList<QPair<QString, QVariant>> data{
            {"object_type", "OT_USER"},   {"parent", "3"},           {"property-PT_LOGIN", "old"},
            {"property-PT_LOGIN", "new"}, {"property-PT_NAME", ""},  {"ignored", "x"},
            {"inherit-parent-4", 30u},    {"inherit-child-15", 501u}};
        addTo(h.screen, task("A", "save_object", 12, data), nullptr);
        addTo(h.screen, task("B", "create_object", 77, data), &receiver);
        TYPE_ID uid = 0, parent = 0;
        QString type;
        QHash<QString, QString> parameters;
        unpack(h.sent(command::UpdateObject).value(0).data, uid, type, parent, parameters);
        QCOMPARE(uid, TYPE_ID(12));
        QCOMPARE(type, QStringLiteral("OT_USER"));
        QCOMPARE(parent, TYPE_ID(3));
        const QHash<QString, QString> expected{{"PT_LOGIN", "new"}, {"PT_NAME", ""}};
        QCOMPARE(parameters, expected);

        h.server.answerOk(h.sent(command::UpdateObject).at(0));
        zeral::ObjectInfo object;
        QList<zeral::_INHERIT_DATA> links;
        const Command request = h.sent(command::AddObject).value(0);
        unpack(request.data, object, links);
        QCOMPARE(object.uid, TYPE_ID(0));
        QCOMPARE(object.parent, TYPE_ID(3));
        QCOMPARE(object.parameters, expected);
        // Links in key order: "inherit-child-15" before "inherit-parent-4".
        QStringList linkTexts;
        for (const zeral::_INHERIT_DATA &link : qAsConst(links))
            linkTexts
                << QStringLiteral("%1>%2:%3").arg(link.parent).arg(link.child).arg(link.linkType);
        QCOMPARE(linkTexts, (QStringList{"0>501:15", "30>0:4"}));
        h.server.answerOk(request, ZRDataStream::pack(qint32(640)));
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{640});
    }

    void prescribeAndDeletePayloads()
    {
        UserCtlHarness h;
        addTo(h.screen, task("A", "prescribe", 8, {{"PT_ROLETEMPLATE", "RT_X"}}), nullptr);
        addTo(h.screen, task("B", "delete_object", 9, {{"object_type", "OT_USER"}}), nullptr);
        TYPE_ID uid = 0;
        QString text;
        unpack(h.sent(command::PrescribeRoleTemplate).value(0).data, uid, text);
        QCOMPARE(text + QString::number(uid), QStringLiteral("RT_X8"));
        h.server.answerOk(h.sent(command::PrescribeRoleTemplate).value(0));
        unpack(h.sent(command::RemoveObject).value(0).data, uid, text);
        QCOMPARE(text + QString::number(uid), QStringLiteral("OT_USER9"));
    }

    void permissionPayloads_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("request");
        QTest::addColumn<bool>("fail");
        QTest::addRow("update") << "update_permissions" << command::UpdatePermissions << false;
        QTest::addRow("add") << "add_permissions" << command::AddPermissions << false;
        QTest::addRow("update failing")
            << "update_permissions" << command::UpdatePermissions << true;
    }
    void permissionPayloads()
    {
        QFETCH(QString, kind);
        QFETCH(QString, request);
        QFETCH(bool, fail);
        UserCtlHarness h;
        QSignalSpy read(h.screen.data(), &UserCtl::permissionsRead);
        addTo(h.screen, task("A", kind, 21, {{"object-300", 0}, {"object-7", 5}, {"other", 1}}),
              nullptr);
        addTo(h.screen, save("B", 22), nullptr);
        const Command sent = h.server.lastSent(request);
        ZRDataStream in(sent.data);
        TYPE_ID uid = 21;
        if (kind == QLatin1String("update_permissions"))
            in >> uid;
        QList<zeral::OBJECT_PERMISSION> permissions;
        in >> permissions;
        // The value of an "object-" key never counts: every right is 12.
        QStringList texts;
        for (const zeral::OBJECT_PERMISSION &p : qAsConst(permissions))
            texts << QStringLiteral("%1:%2:%3").arg(p.subject).arg(p.object).arg(p.permission);
        texts.sort();
        QCOMPARE(uid, TYPE_ID(21));
        QCOMPARE(texts, (QStringList{"21:300:12", "21:7:12"}));

        if (fail)
            h.server.answerFailure(sent, zeral::proto::StatusForbidden, QStringLiteral("no"));
        else
            h.server.answerOk(sent);
        // Both ways the rights are read back, and only then the next task goes.
        const QList<Command> reads = h.sent(command::GetPermissions);
        QCOMPARE(reads.size(), 1);
        QList<TYPE_ID> asked;
        unpack(reads.at(0).data, asked);
        QCOMPARE(asked, QList<TYPE_ID>{21});
        QCOMPARE(h.sent(command::UpdateObject).size(), 1);
        const zeral::OBJECT_PERMISSION back{21, 300, 12};
        h.server.answerOk(reads.at(0), ZRDataStream::pack(QList<zeral::OBJECT_PERMISSION>{back}));
        QCOMPARE(read.count(), 1);
        QCOMPARE(read.at(0).at(0).value<QList<zeral::OBJECT_PERMISSION>>().size(), 1);
    }

    void emailPayload_data()
    {
        QTest::addColumn<QVariant>("language");
        QTest::addColumn<QString>("expected");
        QTest::addRow("set") << QVariant(QStringLiteral("en_GB")) << "en";
        QTest::addRow("default locale") << QVariant() << QLocale().name().left(2);
    }
    void emailPayload()
    {
        QFETCH(QVariant, language);
        QFETCH(QString, expected);
        UserCtlHarness h;
        if (language.isValid())
            Settings::setValue(QStringLiteral("mainwindow/language"), language);
        Receiver receiver;
        addTo(h.screen,
              task("A", "send_email", 31,
                   {{"addr_to", "a@b.ru"}, {"greetings", "Здравствуйте"}, {"auth_data", "eyJ9"}}),
              &receiver);
        const Command request = h.sent(command::SendEmail).value(0);
        QCOMPARE(request.type, zeral::proto::NamedCommand);
        // Without the session the server refuses it as a stranger's.
        QVERIFY(!AuthData::sessionId().isEmpty());
        QCOMPARE(request.sessionId, AuthData::sessionId());
        zeral::_EMAIL_MESSAGE mail;
        QString login;
        unpack(request.data, mail, login);
        QCOMPARE(login, QStringLiteral("admin"));
        QCOMPARE(mail.to, QStringLiteral("a@b.ru"));
        QCOMPARE(mail.subject, QStringLiteral("Zeral-Desk v6 Mobile"));
        QVERIFY(mail.body.isEmpty() && mail.attachments.isEmpty());
        const QHash<QString, QVariant> parameters{{"LOCALE", expected},
                                                  {"IS_MOBILE_TOKEN", true},
                                                  {"GREETINGS", "Здравствуйте"},
                                                  {"TOKEN", "eyJ9"}};
        QCOMPARE(mail.parameters, parameters);
        h.server.answerFailure(request, zeral::proto::StatusInternal, QStringLiteral("smtp"));
        QTRY_COMPARE(receiver.told, QList<TYPE_ID>{0});
    }

    // Debug logging names every task it runs, but never the secrets a task carries.
    void secretsStayOutOfTheLog_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("key");
        QTest::addRow("mail token") << "send_email" << "auth_data";
        QTest::addRow("clipboard") << "save_to_clipboard" << "text";
        QTest::addRow("password hash") << "save_object" << "property-PT_PASSHASH";
    }
    void secretsStayOutOfTheLog()
    {
        QFETCH(QString, type);
        QFETCH(QString, key);
        static QStringList logged;
        logged.clear();
        // Forced on past QT_LOGGING_RULES, which the test runner sets to keep debug lines out.
        static QLoggingCategory::CategoryFilter defaultFilter = nullptr;
        defaultFilter = QLoggingCategory::installFilter([](QLoggingCategory *category) {
            if (defaultFilter)
                defaultFilter(category);
            if (qstrcmp(category->categoryName(), "gui.plugin.userctl") == 0)
                category->setEnabled(QtDebugMsg, true);
        });
        const QtMessageHandler previous
            = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
                  logged.append(text);
              });
        const QString secret = QStringLiteral("eyJwYXNzdyI6IlNlY3JldDEyMyJ9");
        {
            UserCtlHarness h;
            Receiver receiver;
            addTo(h.screen,
                  task("A", type, 31,
                       {{"object_type", "OT_USER"}, {"addr_to", "a@b.ru"}, {key, secret}}),
                  &receiver);
        }
        qInstallMessageHandler(previous);
        QLoggingCategory::installFilter(defaultFilter);
        const QString all = logged.join(QLatin1Char('\n'));
        QVERIFY2(all.contains(QStringLiteral("process task")), qPrintable(all));
        QVERIFY2(!all.contains(secret), qPrintable(all));
    }
};

QTEST_MAIN(TestUserCtlQueue)
#include "tst_userctlqueue.moc"
