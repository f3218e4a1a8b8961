// Biometric confirmation on the users screen: the statements sent for creating, changing and
// deleting a user, how their rows become grant variants and templates, the confirmation
// dialog of a change, the template counts a dialog waits for, and the enrolment button.
#include "userctlharness.h"

#include <tests/support/modalanswerer.h>

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/dialogs/validatingdialog.h>

#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using Templates = QMultiHash<TYPE_ID, zeral::TEMPLATE_DATA>;

namespace {

// The statement as the server has always been sent it, word for word, for a confirming role.
QString statement(const QString &role)
{
    return QStringLiteral(
               R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, '%1' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, '%1' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true );)sql")
        .arg(role);
}

struct Row
{
    TYPE_ID uid;
    quint32 format;
    QByteArray fingerprint;
    bool hasRole;
    QString templateId;
    QString templateName;
};

QByteArray resultOf(const QList<Row> &rows)
{
    DbResult result;
    result.rowCount = rows.size();
    result.columnCount = 6;
    for (const Row &row : rows)
        result.values << row.uid << row.format << row.fingerprint << (row.hasRole ? 1 : 0)
                      << row.templateId << row.templateName;
    return ZRDataStream::pack(result);
}

// What the screen emits towards a fingerprint widget, one text per signal, in order; the
// templates as sorted "owner:format:bytes", marked when they lack the fixed values of a
// template made from a query row.
void record(UserCtl *screen, QStringList *events)
{
    QObject::connect(screen, &UserCtl::variantsForVerify, screen,
                     [events](const QString &name, int id, int count) {
                         *events << QStringLiteral("variant %1/%2/%3").arg(name).arg(id).arg(count);
                     });
    QObject::connect(screen, &UserCtl::uidsForVerify, screen,
                     [events](int variant, int index, const QList<TYPE_ID> &uids) {
                         QStringList texts;
                         for (const TYPE_ID uid : uids)
                             texts << QString::number(uid);
                         *events << QStringLiteral("uids %1/%2/").arg(variant).arg(index)
                                        + texts.join(',');
                     });
    QObject::connect(screen, &UserCtl::templatesForVerify, screen,
                     [events](const Templates &given) {
                         QStringList texts;
                         for (auto it = given.constBegin(); it != given.constEnd(); ++it) {
                             const bool fixed = it->marker == 0xFF && it->lastValue == 0xFFFF;
                             texts << QStringLiteral("%1:%2:%3%4")
                                          .arg(it.key())
                                          .arg(it->format)
                                          .arg(QString::fromLatin1(it->data), fixed ? "" : "!");
                         }
                         texts.sort();
                         *events << QStringLiteral("templates ") + texts.join(' ');
                     });
    QObject::connect(screen, &UserCtl::startVerify, screen,
                     [events] { *events << QStringLiteral("start"); });
}

} // namespace

Q_DECLARE_METATYPE(Row)

class TestUserCtlConfirm : public QObject
{
    Q_OBJECT

    static void setWatched(UserCtl *screen, const QList<TYPE_ID> &uids)
    {
        screen->m_templateWatchUids = uids;
    }
    static void fingerExistsRead(UserCtl *screen, Command &answer)
    {
        screen->fingerExistsRead(answer);
    }

private slots:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("gui.plugin.userctl.warning=false"));
    }

    void statements_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("statement");
        QTest::addRow("create") << "getUserTemplatesForCreateUser"
                                << statement("RL_CONFIRM_USER_CREATE");
        QTest::addRow("delete") << "getUserTemplatesForDeleteUser"
                                << statement("RL_CONFIRM_USER_DELETE");
        // The change's statement has always ended with a space.
        QTest::addRow("change") << "verifyEdit" << statement("RL_CONFIRM_USER_UPDATE") + ' ';
    }
    void statements()
    {
        QFETCH(QString, slot);
        QFETCH(QString, statement);
        UserCtlHarness h;
        QVERIFY(QMetaObject::invokeMethod(h.screen, slot.toLatin1().constData()));
        QCOMPARE(h.sent(command::ExecSql).size(), 1);
        DbQuery query;
        unpack(h.sent(command::ExecSql).first().data, query);
        QCOMPARE(query.statements, QStringList{statement});
    }

    void templatesRead_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<QList<Row>>("rows");
        QTest::addColumn<QStringList>("events");
        const QByteArray a("finger-a"), b("finger-b"), c("finger-c");
        // Nobody can confirm: the operator can only refuse.
        const QStringList nobody{"templates ", "start"};
        QTest::addRow("no row") << qint32(1) << QList<Row>{} << nobody;
        QTest::addRow("failed answer")
            << qint32(zeral::proto::StatusMalformed) << QList<Row>{} << nobody;
        QTest::addRow("one holder, two fingers")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", "охрана на сервере"},
                          {10, 7, b, true, "RT_SECURITY", "охрана на сервере"}}
            << QStringList{"variant Служба охраны/0/1", "uids 0/0/10",
                           "templates 10:7:finger-a 10:7:finger-b", "start"};
        QTest::addRow("id unknown to the built-in names")
            << qint32(1) << QList<Row>{{11, 9, c, true, "RT_X42", "Ночная смена"}}
            << QStringList{"variant Ночная смена/0/1", "uids 0/0/11", "templates 11:9:finger-c",
                           "start"};
        QTest::addRow("two holders, one without the role")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", ""},
                          {12, 7, b, false, "RT_OPERATOR", ""},
                          {13, 7, c, true, "RT_SECURITY", ""}}
            << QStringList{"variant Служба охраны/0/1", "uids 0/0/10,13",
                           "templates 10:7:finger-a 12:7:finger-b 13:7:finger-c", "start"};
        QTest::addRow("holders of two templates")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", ""},
                          {14, 7, b, true, "RT_ADMINISTRATOR", ""}}
            << QStringList{"variant Служба охраны, Администратор/0/1", "uids 0/0/10,14",
                           "templates 10:7:finger-a 14:7:finger-b", "start"};
    }
    void templatesRead()
    {
        QFETCH(qint32, status);
        QFETCH(QList<Row>, rows);
        UserCtlHarness h;
        QStringList events;
        record(h.screen, &events);
        QMetaObject::invokeMethod(h.screen, "getUserTemplatesForDeleteUser");
        h.server.answer(h.sent(command::ExecSql).first(), status, resultOf(rows));
        QTEST(events, "events");
    }

    void changeDialog_data()
    {
        QTest::addColumn<bool>("answered");
        QTest::addColumn<bool>("touch");
        QTest::addColumn<QString>("press");
        QTest::addColumn<QString>("outcome"); // the signal emitted; none leaves the dialog open
        QTest::addRow("confirmed") << true << true << "Подтвердить"
                                   << "accept";
        QTest::addRow("refused") << true << false << "Отклонить"
                                 << "reject";
        QTest::addRow("unknown finger") << true << false << "Подтвердить"
                                        << "";
        QTest::addRow("failed query") << false << false << "Подтвердить"
                                      << "";
    }
    void changeDialog()
    {
        QFETCH(bool, answered);
        QFETCH(bool, touch);
        QFETCH(QString, press);
        QFETCH(QString, outcome);
        UserCtlHarness h;
        QStringList emitted;
        connect(h.screen, &UserCtl::acceptChanges, this, [&emitted] { emitted << "accept"; });
        connect(h.screen, &UserCtl::rejectChanges, this, [&emitted] { emitted << "reject"; });
        h.screen->verifyEdit();
        QPointer<ValidatingDialog> dialog = h.screen->findChild<ValidatingDialog *>();
        QVERIFY(dialog && dialog->isVisible() && dialog->isModal());
        auto *widget = qobject_cast<AuthorizationWidget *>(dialog->centralWidget());
        QVERIFY(widget && !widget->isEnabled());
        QMap<QString, QPushButton *> buttons;
        for (QPushButton *button : dialog->findChildren<QPushButton *>())
            buttons.insert(button->text(), button);
        QPushButton *confirm = buttons.value(QStringLiteral("Подтвердить"));
        QVERIFY(confirm && buttons.value(QStringLiteral("Отклонить")) && !confirm->isEnabled());

        zeral::TEMPLATE_DATA enrolled;
        enrolled.format = FingerprintReader::SimulatedFormat;
        enrolled.data = SimulatedFingerprintReader::newTemplate();
        const Command request = h.sent(command::ExecSql).first();
        if (answered)
            h.server.answerOk(
                request, resultOf({{21, enrolled.format, enrolled.data, true, "RT_SECURITY", ""}}));
        else
            h.server.answerFailure(request, zeral::proto::StatusInternal, QStringLiteral("x"));
        QVERIFY(widget->isEnabled()); // started
        auto *reader = qobject_cast<SimulatedFingerprintReader *>(widget->reader());
        if (touch)
            reader->touch(enrolled);
        else
            reader->touchUnknownFinger();
        QCOMPARE(confirm->isEnabled(), touch);

        buttons.value(press)->click();
        QCOMPARE(emitted.join(QString()), outcome);
        if (outcome.isEmpty())
            QVERIFY(dialog && dialog->isVisible());
        else
            QTRY_VERIFY(!dialog); // deleted on close
    }

    void fingerCountsOnlyForWatchedUsers_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<QList<TYPE_ID>>("watched");
        QTest::addColumn<QStringList>("told");
        QTest::addRow("one watched") << qint32(1) << QList<TYPE_ID>{5} << QStringList{"5:2"};
        QTest::addRow("none watched") << qint32(1) << QList<TYPE_ID>{} << QStringList{};
        QTest::addRow("both watched")
            << qint32(1) << QList<TYPE_ID>{5, 6} << QStringList{"5:2", "6:0"};
        QTest::addRow("failed answer") << qint32(7) << QList<TYPE_ID>{5} << QStringList{};
    }
    void fingerCountsOnlyForWatchedUsers()
    {
        QFETCH(qint32, status);
        QFETCH(QList<TYPE_ID>, watched);
        QFETCH(QStringList, told);
        UserCtlHarness h;
        QStringList seen;
        connect(h.screen, &UserCtl::userTemplatesRead, this, [&seen](TYPE_ID uid, int count) {
            seen.append(QStringLiteral("%1:%2").arg(uid).arg(count));
        });
        setWatched(h.screen, watched);
        Command answer;
        answer.status = status;
        answer.data = ZRDataStream::pack(QHash<unsigned int, unsigned int>{{5, 2}, {6, 0}, {9, 4}});
        fingerExistsRead(h.screen, answer);
        seen.sort();
        QCOMPARE(seen, told);
    }

    void enrolmentButton_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<bool>("box");
        QTest::addRow("refused") << qint32(zeral::proto::StatusBiometricRefused) << true;
        QTest::addRow("forbidden") << qint32(zeral::proto::StatusForbidden) << false;
        QTest::addRow("done") << qint32(zeral::proto::StatusOk) << false;
    }
    void enrolmentButton()
    {
        QFETCH(qint32, status);
        QFETCH(bool, box);
        UserCtlHarness::storeUsers({UserCtlHarness::user(31, "guard", "RT_OPERATOR")});
        UserCtlHarness h;
        h.answerTemplates();
        QAction *scan = h.child("actionFingerptint");
        scan->trigger(); // nothing selected: nothing is sent
        QVERIFY(h.sent(zeral::proto::studio::ShowFingerprintWidget).isEmpty());

        h.users->selectRow(0);
        scan->trigger();
        const QList<Command> requests = h.sent(zeral::proto::studio::ShowFingerprintWidget);
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().type, zeral::proto::NamedCommand);
        qint32 uid = 0;
        QString client;
        unpack(requests.first().data, uid, client);
        QCOMPARE(uid, 31);
        QCOMPARE(client, h.screen->clientId());

        QString shown;
        ModalAnswerer answerer([&shown](QWidget *modal) {
            auto *message = qobject_cast<QMessageBox *>(modal);
            QVERIFY(message);
            shown = message->windowTitle() + QLatin1Char('|') + message->text();
            message->close();
        });
        h.server.answer(requests.first(), status);
        QCOMPARE(answerer.answered(), box);
        QCOMPARE(shown, box ? QStringLiteral("Персональные данные|Запрещено редактирование "
                                             "биометрической информации")
                            : QString());
        zeral::LocalStorage::instance()->clear();
    }
};

QTEST_MAIN(TestUserCtlConfirm)
#include "tst_userctlconfirm.moc"
