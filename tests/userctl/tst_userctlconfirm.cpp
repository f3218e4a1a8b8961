// Biometric confirmation on the users screen: the statements sent for creating, changing and
// deleting a user, how their rows become grant variants and templates, the confirmation
// dialog of a change, the template counts a dialog waits for, and the enrolment button.
#include "userctlharness.h"

#include <tests/support/builders.h>
#include <tests/support/modalanswerer.h>

#include <host/core/dbquery.h>
#include <host/core/dbresult.h>
#include <host/core/localstorage.h>
#include <host/core/zrdatastream.h>
#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <host/gui/dialogs/validatingdialog.h>
#include <host/gui/widgets/zrtableview.h>
#include <shared/roletemplateinfo.h>

#include <QAction>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

using zeral::TYPE_ID;
using Templates = QMultiHash<TYPE_ID, zeral::TEMPLATE_DATA>;
namespace command = zeral::proto::command;

namespace {

// The statements as the server has always been sent them, word for word.
const QString CreateStatement = QStringLiteral(
    R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, 'RL_CONFIRM_USER_CREATE' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, 'RL_CONFIRM_USER_CREATE' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true );)sql");
const QString DeleteStatement = QStringLiteral(
    R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, 'RL_CONFIRM_USER_DELETE' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, 'RL_CONFIRM_USER_DELETE' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true );)sql");
const QString UpdateStatement = QStringLiteral(
    R"sql(SELECT fingers.user_object_id, templates.template_format, templates.template, role_is_accessed( fingers.user_object_id, 'RL_CONFIRM_USER_UPDATE' ),  get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') as roletemplate_id,  (SELECT rt.interface_name FROM role_template rt WHERE rt.id_name = get_object_param(fingers.user_object_id, 'PT_ROLETEMPLATE') ) as roletemplate_name  FROM fingers  INNER JOIN templates ON (fingers.finger_id = templates.uid)  WHERE fingers.user_object_id IN (SELECT id FROM (SELECT id, role_is_accessed( id, 'RL_CONFIRM_USER_UPDATE' ) AS "hasrole" FROM userid ) AS "src" WHERE hasrole = true ); )sql");

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

zeral::TEMPLATE_DATA fingerprint(quint32 format, const QByteArray &data)
{
    zeral::TEMPLATE_DATA t;
    t.format = format;
    t.data = data;
    return t;
}

// Templates as sorted "owner:format:bytes" texts.
QStringList described(const Templates &templates)
{
    QStringList texts;
    for (auto it = templates.constBegin(); it != templates.constEnd(); ++it)
        texts.append(QStringLiteral("%1:%2:%3")
                         .arg(it.key())
                         .arg(it.value().format)
                         .arg(QString::fromLatin1(it.value().data)));
    texts.sort();
    return texts;
}

// What the screen emitted towards a fingerprint widget, in order of the signals.
struct Verification
{
    explicit Verification(UserCtl *screen)
    {
        QObject::connect(screen, &UserCtl::variantsForVerify, screen,
                         [this](const QString &name, int id, int count) {
                             order.append(QStringLiteral("variant"));
                             variants.append(
                                 QStringLiteral("%1/%2/%3").arg(name).arg(id).arg(count));
                         });
        QObject::connect(screen, &UserCtl::uidsForVerify, screen,
                         [this](int variant, int index, const QList<TYPE_ID> &list) {
                             order.append(QStringLiteral("uids"));
                             QCOMPARE(variant, 0);
                             QCOMPARE(index, 0);
                             uids = list;
                         });
        QObject::connect(screen, &UserCtl::templatesForVerify, screen,
                         [this](const Templates &given) {
                             order.append(QStringLiteral("templates"));
                             templates = given;
                         });
        QObject::connect(screen, &UserCtl::startVerify, screen,
                         [this] { order.append(QStringLiteral("start")); });
    }
    QStringList order;
    QStringList variants;
    QList<TYPE_ID> uids;
    Templates templates;
};

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
        QTest::addRow("create") << "getUserTemplatesForCreateUser" << CreateStatement;
        QTest::addRow("delete") << "getUserTemplatesForDeleteUser" << DeleteStatement;
        QTest::addRow("change") << "verifyEdit" << UpdateStatement;
    }
    void statements()
    {
        QFETCH(QString, slot);
        QFETCH(QString, statement);
        UserCtlHarness h;
        QVERIFY(QMetaObject::invokeMethod(h.screen, slot.toLatin1().constData()));
        QCOMPARE(h.sent(command::ExecSql).size(), 1);
        DbQuery query;
        ZRDataStream in(h.sent(command::ExecSql).first().data);
        in >> query;
        QCOMPARE(query.statements, QStringList{statement});
    }

    void templatesRead_data()
    {
        QTest::addColumn<qint32>("status");
        QTest::addColumn<QList<Row>>("rows");
        QTest::addColumn<QStringList>("variants");
        QTest::addColumn<QList<TYPE_ID>>("uids");
        QTest::addColumn<QStringList>("templates");
        const QByteArray a("finger-a"), b("finger-b"), c("finger-c");
        QTest::addRow("no row") << qint32(1) << QList<Row>{} << QStringList{} << QList<TYPE_ID>{}
                                << QStringList{};
        QTest::addRow("one holder, two fingers")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", "охрана на сервере"},
                          {10, 7, b, true, "RT_SECURITY", "охрана на сервере"}}
            << QStringList{"Служба охраны/0/1"} << QList<TYPE_ID>{10}
            << QStringList{"10:7:finger-a", "10:7:finger-b"};
        QTest::addRow("id unknown to the built-in names")
            << qint32(1) << QList<Row>{{11, 9, c, true, "RT_X42", "Ночная смена"}}
            << QStringList{"Ночная смена/0/1"} << QList<TYPE_ID>{11}
            << QStringList{"11:9:finger-c"};
        QTest::addRow("two holders, one without the role")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", ""},
                          {12, 7, b, false, "RT_OPERATOR", ""},
                          {13, 7, c, true, "RT_SECURITY", ""}}
            << QStringList{"Служба охраны/0/1"} << QList<TYPE_ID>{10, 13}
            << QStringList{"10:7:finger-a", "12:7:finger-b", "13:7:finger-c"};
        QTest::addRow("holders of two templates")
            << qint32(1)
            << QList<Row>{{10, 7, a, true, "RT_SECURITY", ""},
                          {14, 7, b, true, "RT_ADMINISTRATOR", ""}}
            << QStringList{"Служба охраны, Администратор/0/1"} << QList<TYPE_ID>{10, 14}
            << QStringList{"10:7:finger-a", "14:7:finger-b"};
        // Nobody can confirm: the operator can only refuse.
        QTest::addRow("failed answer") << qint32(zeral::proto::StatusMalformed) << QList<Row>{}
                                       << QStringList{} << QList<TYPE_ID>{} << QStringList{};
    }
    void templatesRead()
    {
        QFETCH(qint32, status);
        QFETCH(QList<Row>, rows);
        QFETCH(QStringList, variants);
        QFETCH(QList<TYPE_ID>, uids);
        QFETCH(QStringList, templates);
        UserCtlHarness h;
        Verification seen(h.screen);
        QMetaObject::invokeMethod(h.screen, "getUserTemplatesForDeleteUser");
        h.server.answer(h.sent(command::ExecSql).first(), status, resultOf(rows));

        QCOMPARE(seen.variants, variants);
        QCOMPARE(seen.uids, uids);
        QCOMPARE(described(seen.templates), templates);
        QStringList order{"templates", "start"};
        if (!variants.isEmpty())
            order = QStringList{"variant", "uids"} + order;
        QCOMPARE(seen.order, order);
        // Every template carries the fixed values of a template made from a query row.
        for (const zeral::TEMPLATE_DATA &t : qAsConst(seen.templates)) {
            QCOMPARE(t.marker, quint8(0xFF));
            QCOMPARE(t.lastValue, quint16(0xFFFF));
        }
    }

    void changeDialog_data()
    {
        QTest::addColumn<bool>("answered");
        QTest::addColumn<bool>("touch");
        QTest::addColumn<QString>("press");
        QTest::addColumn<int>("accepted");
        QTest::addColumn<int>("rejected");
        QTest::addRow("confirmed") << true << true << "Подтвердить" << 1 << 0;
        QTest::addRow("refused") << true << false << "Отклонить" << 0 << 1;
        QTest::addRow("unknown finger") << true << false << "Подтвердить" << 0 << 0;
        QTest::addRow("failed query") << false << false << "Подтвердить" << 0 << 0;
    }
    void changeDialog()
    {
        QFETCH(bool, answered);
        QFETCH(bool, touch);
        QFETCH(QString, press);
        QFETCH(int, accepted);
        QFETCH(int, rejected);
        UserCtlHarness h;
        QSignalSpy acceptSpy(h.screen.data(), &UserCtl::acceptChanges);
        QSignalSpy rejectSpy(h.screen.data(), &UserCtl::rejectChanges);
        h.screen->verifyEdit();
        auto *dialog = h.screen->findChild<ValidatingDialog *>();
        QVERIFY(dialog && dialog->isVisible() && dialog->isModal());
        auto *widget = qobject_cast<AuthorizationWidget *>(dialog->centralWidget());
        QVERIFY(widget && !widget->isEnabled());
        QPushButton *confirm = nullptr;
        QPushButton *refuse = nullptr;
        for (QPushButton *button : dialog->findChildren<QPushButton *>()) {
            if (button->text() == QStringLiteral("Подтвердить"))
                confirm = button;
            else if (button->text() == QStringLiteral("Отклонить"))
                refuse = button;
        }
        QVERIFY(confirm && refuse && !confirm->isEnabled());

        const QByteArray enrolled = SimulatedFingerprintReader::newTemplate();
        const Command request = h.sent(command::ExecSql).first();
        if (answered)
            h.server.answerOk(request, resultOf({{21, FingerprintReader::SimulatedFormat, enrolled,
                                                  true, "RT_SECURITY", ""}}));
        else
            h.server.answerFailure(request, zeral::proto::StatusInternal, QStringLiteral("x"));
        QVERIFY(widget->isEnabled()); // started
        auto *reader = qobject_cast<SimulatedFingerprintReader *>(widget->reader());
        if (touch)
            reader->touch(fingerprint(FingerprintReader::SimulatedFormat, enrolled));
        else
            reader->touchUnknownFinger();
        QCOMPARE(confirm->isEnabled(), touch);

        QPointer<ValidatingDialog> alive(dialog);
        (press == QStringLiteral("Подтвердить") ? confirm : refuse)->click();
        QCOMPARE(acceptSpy.count(), accepted);
        QCOMPARE(rejectSpy.count(), rejected);
        if (accepted || rejected)
            QTRY_VERIFY(!alive); // deleted on close
        else
            QVERIFY(alive && alive->isVisible());
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
        zeral::LocalStorage::instance()->clear();
        zeral::ObjectInfo guard = testing::makeUser(31, "guard");
        guard.parameters.insert(QStringLiteral("PT_ROLETEMPLATE"), QStringLiteral("RT_OPERATOR"));
        zeral::LocalStorage::instance()->applyChanged(QStringLiteral("user"), {guard});
        UserCtlHarness h;
        const zeral::ROLETEMPLATES_HASH templates{
            {"RT_OPERATOR", {"RT_OPERATOR", {}, {}, false, {"RL_USER_SHOW"}, {}}}};
        h.server.answerOk(h.sent(command::RoleTemplateInherit).last(),
                          ZRDataStream::pack(templates, QList<QString>(), true));
        auto *users = h.child<ZRTableView>("usersList");
        QAction *scan = h.child<QAction>("actionFingerptint");
        scan->trigger(); // nothing selected: nothing is sent
        QVERIFY(h.sent(zeral::proto::studio::ShowFingerprintWidget).isEmpty());

        QCOMPARE(users->model()->rowCount(), 1);
        users->selectRow(0);
        scan->trigger();
        QCOMPARE(h.sent(zeral::proto::studio::ShowFingerprintWidget).size(), 1);
        const Command request = h.sent(zeral::proto::studio::ShowFingerprintWidget).first();
        QCOMPARE(request.type, zeral::proto::NamedCommand);
        qint32 uid = 0;
        QString client;
        ZRDataStream in(request.data);
        in >> uid >> client;
        QCOMPARE(uid, 31);
        QCOMPARE(client, h.screen->clientId());

        QString shown;
        ModalAnswerer answerer([&shown](QWidget *modal) {
            auto *message = qobject_cast<QMessageBox *>(modal);
            QVERIFY(message);
            shown = message->windowTitle() + QLatin1Char('|') + message->text();
            message->close();
        });
        h.server.answer(request, status);
        QCOMPARE(answerer.answered(), box);
        if (box)
            QCOMPARE(shown, QStringLiteral("Персональные данные|Запрещено редактирование "
                                           "биометрической информации"));
        zeral::LocalStorage::instance()->clear();
    }
};

QTEST_MAIN(TestUserCtlConfirm)
#include "tst_userctlconfirm.moc"
