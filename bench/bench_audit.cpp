// The audit log screen's pages against the real engine: 100,000 rows of the log (written
// straight into the file: no command makes so many quickly), the engine in a thread of its own,
// the studio's router over loopback after a login, and `admin.audit_log` pages of the size the
// screen asks for, without a filter, deep down the log, and through each filter. Then the same
// with the log's indexes dropped, as the baseline of what they buy. Prints "name value" lines
// in milliseconds (the median of the runs of each page); bench/run turns them into the table.
#include "benchreport.h"
#include "roundtrip.h"
#include "threadedengine.h"

#include <host/core/passhash.h>
#include <host/core/protocol.h>
#include <host/core/zrdatastream.h>
#include <host/core/zrserverinterface.h>
#include <server/engine/serverengine.h>
#include <shared/auditfilter.h>
#include <shared/auditrecord.h>
#include <shared/wire.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <functional>

using zeral::AuditFilter;
using zeral::server::ServerEngine;
namespace command = zeral::proto::command;

namespace {

constexpr int rowCount = 100000;
constexpr int runs = 15;
constexpr qint32 pageSize = 200; // what the screen asks for
const QString rootPassword = QStringLiteral("RootPass1");
const QDateTime firstDay(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);
const char *const commands[] = {"data.update_object",
                                "data.add_object",
                                "data.remove_object",
                                "data.update_permissions",
                                "session.login",
                                "send_email",
                                "data.role_template_prescribe_user",
                                "data.enrol_finger"};

// The log of a busy site: 50 operators (one of them, "rare", with a row in a thousand), eight
// commands, 2,000 objects named as people, one refusal in ten, spread over a hundred days.
bool fillLog(const QString &path)
{
    bool ok = true;
    {
        QSqlDatabase db
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench-audit"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        ok = db.open() && db.transaction();
        QSqlQuery insert(db);
        ok = ok
             && insert.prepare(QStringLiteral(
                 "INSERT INTO audit_log (at, operator, session, peer, command, object, status,"
                 " detail, object_name, object_name_folded, confirmed_by) VALUES (?, ?, 'abcdefgh',"
                 " '10.1.2.3', ?, ?, ?, '', ?, ?, '')"));
        for (int i = 0; ok && i < rowCount; ++i) {
            const qint64 seconds = qint64(i) * 100 * 86400 / rowCount;
            const int object = 1000 + i % 2000;
            insert.addBindValue(firstDay.addSecs(seconds).toString(Qt::ISODateWithMs));
            insert.addBindValue(i % 1000 == 7 ? QStringLiteral("rare")
                                              : QStringLiteral("operator%1").arg(i % 49));
            insert.addBindValue(QLatin1String(commands[i % 8]));
            insert.addBindValue(object);
            insert.addBindValue(i % 10 == 3 ? 4 : 1);
            const QString name = QStringLiteral("Сотрудникова%1 Анна (user%1)").arg(object);
            insert.addBindValue(name);
            insert.addBindValue(name.toCaseFolded());
            ok = insert.exec();
        }
        ok = ok && db.commit();
        if (!ok)
            std::fprintf(stderr, "bench_audit: %s\n", qPrintable(db.lastError().text()));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench-audit"));
    return ok;
}

bool dropIndexes(const QString &path)
{
    bool ok = true;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"),
                                                    QStringLiteral("bench-audit-drop"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        ok = db.open();
        QSqlQuery query(db);
        for (const char *index :
             {"audit_log_by_operator", "audit_log_by_command", "audit_log_by_object"})
            ok = ok && query.exec(QStringLiteral("DROP INDEX ") + QLatin1String(index));
        if (!ok)
            std::fprintf(stderr, "bench_audit: %s\n", qPrintable(query.lastError().text()));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench-audit-drop"));
    return ok;
}

struct Case
{
    const char *name;
    qint64 beforeId;
    std::function<void(AuditFilter &)> narrow;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    QTemporaryDir dir;
    ServerEngine::Options options;
    options.databasePath = dir.filePath(QStringLiteral("bench.db"));
    options.loginPolicy.delayStepMs = 0;

    bench::ThreadedEngine engine(options);
    const QString error = engine.start(rootPassword);
    const quint16 port = engine.port();
    if (!error.isEmpty() || !fillLog(options.databasePath)) {
        std::fprintf(stderr, "bench_audit: %s\n", qPrintable(error));
        return 1;
    }

    ZRServerInterface router;
    bool connected = false;
    QObject::connect(&router, &ZRServerInterface::connected, [&] { connected = true; });
    router.connectToServer(QStringLiteral("127.0.0.1"), port);
    if (!bench::waitFor([&] { return connected; }, 10000)) {
        std::fprintf(stderr, "bench_audit: no connection\n");
        return 1;
    }
    Command login = Command::named(QLatin1String(command::Login));
    login.data = ZRDataStream::pack(QStringLiteral("root"),
                                    PassHash::encrypt(rootPassword, QCryptographicHash::Md5),
                                    QStringLiteral("bench"));
    Command answer;
    bench::roundTrip(router, login, &answer);
    QByteArray session;
    ZRDataStream loginAnswer(answer.data);
    loginAnswer >> session;
    if (!answer.isOk()) {
        std::fprintf(stderr, "bench_audit: login failed\n");
        return 1;
    }

    const QList<Case> cases = {
        {"audit_page_first", 0,
         [](AuditFilter &) {
         }},
        {"audit_page_deep", rowCount / 2,
         [](AuditFilter &) {
         }},
        {"audit_page_operator", 0,
         [](AuditFilter &f) {
             f.operatorLogin = "OPERATOR17";
         }},
        {"audit_page_rare_operator", 0,
         [](AuditFilter &f) {
             f.operatorLogin = "rare";
         }},
        {"audit_page_action", 0,
         [](AuditFilter &f) {
             f.command = "data.remove_object";
         }},
        {"audit_page_refusals", 0,
         [](AuditFilter &f) {
             f.result = AuditFilter::RefusalsOnly;
         }},
        {"audit_page_object_uid", 0,
         [](AuditFilter &f) {
             f.object = "1234";
         }},
        {"audit_page_object_name", 0,
         [](AuditFilter &f) {
             f.object = "сотрудникова1234 ";
         }},
        {"audit_page_no_match", 0,
         [](AuditFilter &f) {
             f.object = "Нет такого";
         }},
        {"audit_page_day", 0,
         [](AuditFilter &f) {
             f.from = firstDay.addDays(40);
             f.to = firstDay.addDays(41);
         }},
        {"audit_page_operator_day", 0,
         [](AuditFilter &f) {
             f.operatorLogin = "operator3";
             f.from = firstDay.addDays(40);
             f.to = firstDay.addDays(41);
         }},
        {"audit_page_oldest_day", 0,
         [](AuditFilter &f) {
             f.from = firstDay;
             f.to = firstDay.addDays(1);
         }},
        {"audit_page_wide_period", 0,
         [](AuditFilter &f) {
             f.from = firstDay.addDays(5);
             f.to = firstDay.addDays(95);
         }},
    };
    for (const char *suffix : {"", "_noindex"}) {
        if (*suffix && !dropIndexes(options.databasePath))
            return 1;
        for (const Case &page : cases) {
            AuditFilter filter;
            page.narrow(filter);
            QVector<double> times;
            int rows = 0;
            for (int i = 0; i < runs; ++i) {
                Command request = Command::named(QLatin1String(command::AuditLog), session);
                request.data = ZRDataStream::pack(page.beforeId, pageSize, filter);
                times.append(bench::roundTrip(router, request, &answer));
                QList<zeral::AuditRecord> found;
                ZRDataStream in(answer.data);
                zeral::wire::readList(in, found);
                if (!answer.isOk() || in.status() != QDataStream::Ok) {
                    std::fprintf(stderr, "bench_audit: %s refused: %s\n", page.name,
                                 qPrintable(answer.errorText()));
                    return 1;
                }
                rows = found.size();
            }
            std::fprintf(stderr, "%s%s: %d rows\n", page.name, suffix, rows);
            bench::report(QByteArray(page.name + QByteArray(suffix)).constData(), times);
        }
    }

    return 0;
}
