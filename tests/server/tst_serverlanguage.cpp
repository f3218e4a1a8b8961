// The server speaks to each operator in the language his client named at login: the reasons
// of refusals, the notice of a closed session and the mails he queues. Over real TCP, against
// the catalogues the build made; without a catalogue, or without a language, it is Russian.

#include "databasereader.h"
#include "serverharness.h"

#include <server/engine/ops/servertext.h>
#include <shared/auditfilter.h>
#include <shared/emailmessage.h>
#include <shared/roleentry.h>
#include <shared/rolenames.h>
#include <shared/wire.h>

#include <QLoggingCategory>
#include <QRegularExpression>

using namespace harness;
using zeral::RoleEntry;
using zeral::TYPE_ID;
namespace proto = zeral::proto;

namespace {

const QString BuiltCatalogues = QStringLiteral(ZR_BINARY_DIR "/translations");

// How a client names its language: not at all (an older client), or with this text.
struct Language
{
    bool named;
    QString name;
};

// Warnings of the server about missing catalogues, counted while the test runs.
int missingCatalogueWarnings = 0;
QtMessageHandler previousHandler = nullptr;

void countMissingCatalogues(QtMsgType type, const QMessageLogContext &context,
                            const QString &message)
{
    if (type == QtWarningMsg && message.startsWith(QLatin1String("no catalogue zrserver_")))
        ++missingCatalogueWarnings;
    previousHandler(type, context, message);
}

} // namespace

class TestServerLanguage : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        zeral::server::ServerEngine::Options options;
        options.catalogueDir = BuiltCatalogues;
        QCOMPARE(m_server.start(options), QString());
        m_root = m_server.rootClient();
        QVERIFY(addUser(*m_root, QStringLiteral("clerk"), QStringLiteral("RT_OPERATOR")));
        const TYPE_ID blocked
            = addUser(*m_root, QStringLiteral("blocked"), QStringLiteral("RT_OPERATOR"));
        QVERIFY(blocked);
        QCOMPARE(
            m_root
                ->request(cmd::UpdateObject,
                          ZRDataStream::pack(
                              quint32(blocked), QString::fromLatin1(db::system::USER), quint32(0),
                              QHash<QString, QString>{{QString::fromLatin1(db::user::OBJECTSTATE),
                                                       QStringLiteral("b")}}))
                .status,
            qint32(proto::StatusOk));
    }

    // Typical refusals, each as an English operator reads it and as the Russian source has
    // it: an operator without the right, unreadable input, a bound, a conflict naming a
    // value, a blocked account, a wrong password, a command the server doesn't know.
    void refusals_data()
    {
        QTest::addColumn<QString>("refusal");
        QTest::addColumn<bool>("named");
        QTest::addColumn<QString>("language");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("expected");
        struct Refusal
        {
            const char *name;
            int status;
            const char *english;
            const char *russian;
        };
        const Refusal refusals[] = {
            {"no right", proto::StatusForbidden, "Insufficient permissions to create users.",
             "Недостаточно прав для создания пользователей."},
            {"unreadable request", proto::StatusMalformed, "The data request cannot be read.",
             "Запрос данных не читается."},
            {"page out of bounds", proto::StatusMalformed,
             "A page of the audit log may hold 1 to 500 rows, but 0 were requested.",
             "Страница журнала действий может содержать от 1 до 500 строк, а запрошено 0."},
            {"login taken", proto::StatusConflict,
             "The login “clerk” is already taken. Choose another one.",
             "Логин «clerk» уже занят. Выберите другой."},
            {"blocked account", proto::StatusAccountBlocked,
             "The account “blocked” is blocked. Contact your administrator.",
             "Учётная запись «blocked» заблокирована. Обратитесь к администратору."},
            {"wrong password", proto::StatusLoginFailed,
             "Wrong user name or password. Check the keyboard layout and try again.",
             "Неверное имя пользователя или пароль. Проверьте раскладку клавиатуры и повторите."},
            {"unknown command", proto::StatusNotFound,
             "The server does not know the command “data.no_such”. Update the studio.",
             "Сервер не знает команды «data.no_such». Обновите студию."},
        };
        const struct
        {
            const char *tag;
            Language language;
            bool english;
        } languages[] = {
            {"en_GB", {true, QStringLiteral("en_GB")}, true},
            {"en_US", {true, QStringLiteral("en_US")}, true},
            {"en", {true, QStringLiteral("en")}, true},
            {"ru_RU", {true, QStringLiteral("ru_RU")}, false},
            {"empty", {true, QString()}, false},
            {"none named", {false, QString()}, false},
        };
        for (const Refusal &refusal : refusals) {
            for (const auto &language : languages) {
                QTest::addRow("%s, %s", refusal.name, language.tag)
                    << QString::fromLatin1(refusal.name) << language.language.named
                    << language.language.name << refusal.status
                    << QString::fromUtf8(language.english ? refusal.english : refusal.russian);
            }
        }
    }
    void refusals()
    {
        QFETCH(QString, refusal);
        QFETCH(bool, named);
        QFETCH(QString, language);
        QFETCH(int, status);
        QFETCH(QString, expected);

        auto client = m_server.client();
        const auto logIn = [&](const QString &login, const QString &password) {
            return named ? client->login(login, password, language)
                         : client->login(login, password);
        };
        Command answer;
        if (refusal == QLatin1String("no right")) {
            QCOMPARE(logIn(QStringLiteral("clerk"), QStringLiteral("Passw0rd")).status,
                     qint32(proto::StatusOk));
            qint32 refused = 0;
            QVERIFY(!addUser(*client, QStringLiteral("newcomer"), QStringLiteral("RT_OPERATOR"),
                             QStringLiteral("Passw0rd"), &refused, &answer));
        } else if (refusal == QLatin1String("unreadable request")) {
            QCOMPARE(logIn(QStringLiteral("clerk"), QStringLiteral("Passw0rd")).status,
                     qint32(proto::StatusOk));
            answer = client->request(cmd::Snapshot, QByteArray("\x01", 1));
        } else if (refusal == QLatin1String("page out of bounds")) {
            QCOMPARE(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                     qint32(proto::StatusOk));
            answer = client->request(
                cmd::AuditLog, ZRDataStream::pack(qint64(0), qint32(0), zeral::AuditFilter()));
        } else if (refusal == QLatin1String("login taken")) {
            QCOMPARE(logIn(QStringLiteral("root"), QStringLiteral("RootPass1")).status,
                     qint32(proto::StatusOk));
            QVERIFY(!addUser(*client, QStringLiteral("clerk"), QStringLiteral("RT_OPERATOR"),
                             QStringLiteral("Passw0rd"), nullptr, &answer));
        } else if (refusal == QLatin1String("blocked account")) {
            answer = logIn(QStringLiteral("blocked"), QStringLiteral("Passw0rd"));
        } else if (refusal == QLatin1String("wrong password")) {
            // A login of its own for each row: five failures of one login lock it.
            answer = logIn(QString::fromLatin1(QTest::currentDataTag()),
                           QStringLiteral("NotThePassword1"));
        } else {
            QCOMPARE(logIn(QStringLiteral("clerk"), QStringLiteral("Passw0rd")).status,
                     qint32(proto::StatusOk));
            answer = client->request(QStringLiteral("data.no_such"), {}, client->session);
        }
        QCOMPARE(answer.status, qint32(status));
        QCOMPARE(errorText(answer), expected);
    }

    // The audit log keeps the reasons in Russian, whoever was refused: one log for everybody.
    void auditLogKeepsRussian()
    {
        auto english = m_server.client();
        QCOMPARE(english
                     ->login(QStringLiteral("clerk"), QStringLiteral("Passw0rd"),
                             QStringLiteral("en_GB"))
                     .status,
                 qint32(proto::StatusOk));
        Command answer;
        QVERIFY(!addUser(*english, QStringLiteral("auditnewcomer"), QStringLiteral("RT_OPERATOR"),
                         QStringLiteral("Passw0rd"), nullptr, &answer));
        QCOMPARE(errorText(answer), QStringLiteral("Insufficient permissions to create users."));
        QSqlQuery row = readDatabase(
            m_server.dir.filePath(QStringLiteral("server.db")),
            QStringLiteral("SELECT detail FROM audit_log WHERE operator = 'clerk' "
                           "AND command = 'data.add_object' ORDER BY id DESC LIMIT 1"));
        QVERIFY(row.next());
        QCOMPARE(row.value(0).toString(),
                 QStringLiteral("Недостаточно прав для создания пользователей."));
    }

    // A resumed session goes on in its language; a resume that names one (the studio's always
    // does) sets it anew, one that names none (an older client) leaves it as it was.
    void resumedSessionKeepsItsLanguage_data()
    {
        QTest::addColumn<QString>("loginLanguage");
        QTest::addColumn<bool>("named");
        QTest::addColumn<QString>("resumeLanguage");
        QTest::addColumn<QString>("expected");
        const QString english = QStringLiteral("Insufficient permissions to create users.");
        const QString russian = QStringLiteral("Недостаточно прав для создания пользователей.");
        QTest::addRow("English, named again") << "en_GB" << true << "en_GB" << english;
        QTest::addRow("English, none named") << "en_GB" << false << QString() << english;
        QTest::addRow("Russian, none named") << "ru_RU" << false << QString() << russian;
        QTest::addRow("English, Russian named") << "en_GB" << true << "ru_RU" << russian;
    }
    void resumedSessionKeepsItsLanguage()
    {
        QFETCH(QString, loginLanguage);
        QFETCH(bool, named);
        QFETCH(QString, resumeLanguage);
        QFETCH(QString, expected);
        auto first = m_server.client();
        QCOMPARE(
            first->login(QStringLiteral("clerk"), QStringLiteral("Passw0rd"), loginLanguage).status,
            qint32(proto::StatusOk));
        const QByteArray id = first->session;
        const int connections = m_server.engine->connectionCount();
        first->socket.abort();
        QTRY_COMPARE(m_server.engine->connectionCount(), connections - 1);

        auto second = m_server.client();
        const QString login = QStringLiteral("clerk");
        const QString hash = clientHash(QStringLiteral("Passw0rd"));
        const QByteArray resume = named ? ZRDataStream::pack(id, login, hash, resumeLanguage)
                                        : ZRDataStream::pack(id, login, hash);
        QCOMPARE(second->request(QLatin1String(cmd::Resume), resume, {}).status,
                 qint32(proto::StatusOk));
        second->session = id;
        Command answer;
        QVERIFY(!addUser(*second, QStringLiteral("resumenewcomer"), QStringLiteral("RT_OPERATOR"),
                         QStringLiteral("Passw0rd"), nullptr, &answer));
        QCOMPARE(errorText(answer), expected);
    }

    // The catalogue of roles is stored in Russian, as seeded, and each operator reads its
    // titles in his language; a title the catalogue lacks stays as stored.
    void roleTitlesFollowTheSession_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("role");
        QTest::addRow("English") << "en_GB" << "Users" << "Viewing users";
        QTest::addRow("Russian") << "ru_RU" << "Пользователи" << "Просмотр пользователей";
        QTest::addRow("none named") << QString() << "Пользователи" << "Просмотр пользователей";
    }
    void roleTitlesFollowTheSession()
    {
        QFETCH(QString, language);
        QFETCH(QString, group);
        QFETCH(QString, role);
        auto client = m_server.client();
        QCOMPARE(client->login(QStringLiteral("clerk"), QStringLiteral("Passw0rd"), language).status,
                 qint32(proto::StatusOk));
        const Command answer = client->request(cmd::RoleCatalogue);
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        QList<RoleEntry> entries;
        ZRDataStream in(answer.data);
        zeral::wire::readList(in, entries);
        QHash<QString, QString> titles;
        for (const RoleEntry &entry : qAsConst(entries))
            titles.insert(entry.key, entry.title);
        QCOMPARE(titles.value(QStringLiteral("users")), group);
        QCOMPARE(titles.value(QLatin1String(zeral::role::USER_SHOW)), role);
        // Every title of the catalogue is translated: none left in Russian for an English
        // operator.
        if (language.startsWith(QLatin1String("en"))) {
            for (const RoleEntry &entry : qAsConst(entries))
                QVERIFY2(!entry.title.contains(QRegularExpression(QStringLiteral("[А-Яа-яЁё]"))),
                         qPrintable(entry.title));
        }
    }

    // The notice of a session closed by another operator is in the closed session's language,
    // not in that of the operator who closed it.
    void closedSessionIsToldInItsLanguage()
    {
        auto english = m_server.client();
        QCOMPARE(english
                     ->login(QStringLiteral("clerk"), QStringLiteral("Passw0rd"),
                             QStringLiteral("en_GB"))
                     .status,
                 qint32(proto::StatusOk));
        QByteArray ids;
        ZRDataStream out(&ids, QIODevice::WriteOnly);
        out << qint32(1) << english->session;
        QCOMPARE(m_root->request(cmd::DisconnectUsers, ids).status, qint32(proto::StatusOk));
        QTRY_VERIFY(!english->pushesNamed(cmd::SessionClosed).isEmpty());
        QString reason;
        ZRDataStream in(english->pushesNamed(cmd::SessionClosed).constFirst().data);
        in >> reason;
        QCOMPARE(reason, QStringLiteral("Your session was closed by operator root. Please log in "
                                        "again."));
    }

    // Values go into the translated pattern in one pass: a login that looks like a place of
    // a value stays as typed, and the number after it still finds its place.
    void valuesGoInOnce()
    {
        Server server;
        zeral::server::ServerEngine::Options options;
        options.catalogueDir = BuiltCatalogues;
        options.loginPolicy.lockAfter = 1;
        QCOMPARE(server.start(options), QString());
        const QString login = QStringLiteral("guess%2er");
        auto client = server.client();
        QCOMPARE(client->login(login, QStringLiteral("Wrong1"), QStringLiteral("en_GB")).status,
                 qint32(proto::StatusLoginFailed));
        const Command locked
            = client->login(login, QStringLiteral("Wrong1"), QStringLiteral("en_GB"));
        QCOMPARE(locked.status, qint32(proto::StatusLoginLocked));
        QCOMPARE(errorText(locked),
                 QStringLiteral("Logging in as “guess%2er” is closed for a while after several "
                                "failed attempts. Try again in 5 min."));
        QCOMPARE(zeral::server::ServerText::fill(QStringLiteral("%1 and %2, not %3; 100%"),
                                                 {QStringLiteral("%2"), QStringLiteral("two")}),
                 QStringLiteral("%2 and two, not %3; 100%"));
    }

    // A language without a catalogue gets the Russian texts, and the server says so once.
    void missingCatalogueFallsBackToRussian()
    {
        QTemporaryDir empty;
        Server server;
        zeral::server::ServerEngine::Options options;
        options.catalogueDir = empty.path();
        QCOMPARE(server.start(options), QString());
        missingCatalogueWarnings = 0;
        previousHandler = qInstallMessageHandler(countMissingCatalogues);
        for (int attempt = 0; attempt < 3; ++attempt) {
            auto client = server.client();
            const Command answer = client->login(QStringLiteral("root"), QStringLiteral("Wrong1"),
                                                 QStringLiteral("en_GB"));
            QCOMPARE(answer.status, qint32(proto::StatusLoginFailed));
            QCOMPARE(errorText(answer),
                     QStringLiteral("Неверное имя пользователя или пароль. Проверьте раскладку "
                                    "клавиатуры и повторите."));
        }
        qInstallMessageHandler(previousHandler);
        QCOMPARE(missingCatalogueWarnings, 1);
    }

    // A mail whose request names no language goes in the language of the session that
    // queues it; one that names its language keeps it.
    void mailFollowsTheSession_data()
    {
        QTest::addColumn<QString>("sessionLanguage");
        QTest::addColumn<QString>("mailLocale");
        QTest::addColumn<QString>("subject");
        const QString english = QStringLiteral("Message from the Zeral system");
        const QString russian = QStringLiteral("Сообщение системы Zeral");
        QTest::addRow("English session, none named") << "en_GB" << QString() << english;
        QTest::addRow("Russian session, none named") << "ru_RU" << QString() << russian;
        QTest::addRow("no language, none named") << QString() << QString() << russian;
        QTest::addRow("English session, Russian named") << "en_GB"
                                                        << "ru" << russian;
        QTest::addRow("Russian session, English named") << "ru_RU"
                                                        << "en" << english;
    }
    void mailFollowsTheSession()
    {
        QFETCH(QString, sessionLanguage);
        QFETCH(QString, mailLocale);
        QFETCH(QString, subject);
        auto client = m_server.client();
        QCOMPARE(client->login(QStringLiteral("root"), QStringLiteral("RootPass1"), sessionLanguage)
                     .status,
                 qint32(proto::StatusOk));
        zeral::_EMAIL_MESSAGE message;
        message.to = QStringLiteral("someone@example.com");
        if (!mailLocale.isEmpty())
            message.parameters.insert(QLatin1String(zeral::email::LOCALE), mailLocale);
        const Command answer
            = client->request(cmd::SendEmail, ZRDataStream::pack(message, QStringLiteral("root")));
        QCOMPARE(answer.status, qint32(proto::StatusOk));
        qint64 id = 0;
        ZRDataStream(answer.data) >> id;
        QSqlQuery row
            = readDatabase(m_server.dir.filePath(QStringLiteral("server.db")),
                           QStringLiteral("SELECT subject FROM mail_outbox WHERE id = %1").arg(id));
        QVERIFY(row.next());
        QCOMPARE(row.value(0).toString(), subject);
    }

private:
    Server m_server;
    std::unique_ptr<WireClient> m_root;
};

QTEST_GUILESS_MAIN(TestServerLanguage)
#include "tst_serverlanguage.moc"
