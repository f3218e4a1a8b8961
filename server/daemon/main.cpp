// The zr-server daemon: parses its command line and runs the engine until SIGINT or SIGTERM.

#include <host/core/passhash.h>
#include <server/engine/serverengine.h>
#include <server/engine/serverlogging.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int signalPipe[2] = {-1, -1};
volatile sig_atomic_t signalled = 0;

void onSignal(int)
{
    signalled = 1;
    const char byte = 1;
    // Only async-signal-safe work here: the event loop reads the byte and stops the engine
    // after the request it is running, so a transaction is never cut short.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

bool watchSignals(QObject *context, std::function<void()> onStop)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return false;
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, context);
    QObject::connect(notifier, &QSocketNotifier::activated, context, [notifier, onStop] {
        notifier->setEnabled(false);
        char byte = 0;
        [[maybe_unused]] const ssize_t read = ::read(signalPipe[0], &byte, 1);
        onStop();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return sigaction(SIGINT, &action, nullptr) == 0 && sigaction(SIGTERM, &action, nullptr) == 0;
}

bool parseListen(const QString &text, QHostAddress *address, quint16 *port)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    if (colon < 0)
        return false;
    QString host = text.left(colon);
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    bool ok = false;
    const uint number = text.mid(colon + 1).toUInt(&ok);
    if (!ok || number > 65535)
        return false;
    *port = quint16(number);
    if (host.isEmpty() || host == QLatin1String("*"))
        *address = QHostAddress::Any;
    else if (host == QLatin1String("localhost"))
        *address = QHostAddress::LocalHost;
    else if (!address->setAddress(host))
        return false;
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zr-server"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Zeral central server"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption db(QStringLiteral("db"),
                                QStringLiteral("SQLite database file, or a PostgreSQL database as "
                                               "postgresql://user@host:port/dbname."),
                                QStringLiteral("FILE|URL"));
    const QCommandLineOption listen(QStringLiteral("listen"),
                                    QStringLiteral("Address and port to listen on."),
                                    QStringLiteral("ADDR:PORT"), QStringLiteral("127.0.0.1:7700"));
    const QCommandLineOption demo(QStringLiteral("demo"),
                                  QStringLiteral("Store the demo organisation once."));
    const QCommandLineOption demoSize(QStringLiteral("demo-size"),
                                      QStringLiteral("Employees of the demo organisation."),
                                      QStringLiteral("N"), QStringLiteral("300"));
    const QCommandLineOption demoUsers(
        QStringLiteral("demo-users"),
        QStringLiteral("Accounts of the demo besides its own, for trying a large site."),
        QStringLiteral("M"), QStringLiteral("0"));
    const QCommandLineOption tlsCert(QStringLiteral("tls-cert"),
                                     QStringLiteral("PEM certificate: serve over TLS."),
                                     QStringLiteral("FILE"));
    const QCommandLineOption tlsKey(QStringLiteral("tls-key"), QStringLiteral("PEM private key."),
                                    QStringLiteral("FILE"));
    const QCommandLineOption smtp(QStringLiteral("smtp"),
                                  QStringLiteral("Mail relay, smtp://host:port or smtps://..."),
                                  QStringLiteral("URL"));
    const QCommandLineOption initRoot(
        QStringLiteral("init-root-password"),
        QStringLiteral("Read root's password from the first line of stdin, store it, exit."));
    const QCommandLineOption translations(
        QStringLiteral("translations"),
        QStringLiteral("Folder of the catalogues of operator texts (zrserver_<lang>.qm); "
                       "default: <program folder>/../translations."),
        QStringLiteral("DIR"));
    parser.addOptions(
        {db, listen, demo, demoSize, demoUsers, tlsCert, tlsKey, smtp, initRoot, translations});
    parser.process(app);

    QTextStream err(stderr);
    if (!parser.isSet(db)) {
        err << "zr-server: --db FILE or --db postgresql://user@host:port/dbname is required\n";
        return 2;
    }
    zeral::server::ServerEngine::Options options;
    options.databasePath = parser.value(db);
    if (!parseListen(parser.value(listen), &options.address, &options.port)) {
        err << "zr-server: --listen wants ADDR:PORT, got " << parser.value(listen) << "\n";
        return 2;
    }
    bool sizeOk = false;
    options.demo = parser.isSet(demo);
    options.demoSize = parser.value(demoSize).toInt(&sizeOk);
    if (!sizeOk || options.demoSize < 0) {
        err << "zr-server: --demo-size wants a number of employees\n";
        return 2;
    }
    options.demoUsers = parser.value(demoUsers).toInt(&sizeOk);
    if (!sizeOk || options.demoUsers < 0) {
        err << "zr-server: --demo-users wants a number of accounts\n";
        return 2;
    }
    options.tlsCertificatePath = parser.value(tlsCert);
    options.tlsKeyPath = parser.value(tlsKey);
    options.smtpUrl = parser.value(smtp);
    options.catalogueDir = parser.value(translations);

    zeral::server::ServerEngine engine(options);
    // Watched before the database opens: a signal during a long first seed must not kill the
    // process half-way; it is read once the seeding transaction has committed.
    if (!watchSignals(&app, [&engine] {
            qCInfo(lcServer) << "stopping on a signal";
            engine.stop();
            QCoreApplication::quit();
        })) {
        qCCritical(lcServer) << "cannot watch SIGINT and SIGTERM";
        return 1;
    }
    if (parser.isSet(initRoot)) {
        const QString password = QTextStream(stdin).readLine();
        if (password.isEmpty()) {
            err << "zr-server: no password on stdin; root's password stays unset\n";
            return 2;
        }
        const QString error = engine.openDatabase();
        if (!error.isEmpty()
            || !engine.setRootPassword(PassHash::encrypt(password, QCryptographicHash::Md5))) {
            err << "zr-server: " << (error.isEmpty() ? QStringLiteral("could not store") : error)
                << "\n";
            return 1;
        }
        qCInfo(lcServer) << "root's password is set";
        return 0;
    }
    QString error = engine.openDatabase();
    if (error.isEmpty() && signalled) {
        qCInfo(lcServer) << "stopping on a signal that came while the database was prepared";
        engine.stop();
        return 0;
    }
    if (error.isEmpty())
        error = engine.start();
    if (!error.isEmpty()) {
        qCCritical(lcServer).noquote() << error;
        return 1;
    }
    if (!engine.rootPasswordIsSet())
        qCWarning(lcServer) << "root has no password yet: set it with --init-root-password";
    return app.exec();
}
