#pragma once

#include <QString>
#include <QStringList>

// How the studio was asked to start, from its command line.
struct StudioOptions
{
    QString serverHost; // empty: run the server inside the studio
    quint16 serverPort = 0;
    QString databasePath; // of the embedded server; empty: the user's data folder
    bool demo = false;
    QString smtpUrl; // the embedded server's mail relay; empty: mails stay in its outbox
    QString pluginDir;

    bool embedded() const { return serverHost.isEmpty(); }

    // Reads the arguments (the program name first). False with a sentence for the operator in
    // `error` when they can't be used.
    static bool parse(const QStringList &arguments, StudioOptions *options, QString *error);
    // "host:port", "[v6 address]:port".
    static bool parseServerAddress(const QString &text, QString *host, quint16 *port);
    static QString formatServerAddress(const QString &host, quint16 port);
    // Where the embedded server keeps its database when no --db is given.
    static QString defaultDatabasePath(bool demo);
    // The plugins next to the program: <bin>/../plugins.
    static QString defaultPluginDir();
};
