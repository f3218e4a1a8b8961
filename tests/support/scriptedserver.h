#pragma once

#include <host/core/command.h>
#include <host/core/zrserverinterface.h>

#include <QHash>
#include <QList>

#include <functional>

// A ZRServerInterface whose server is the test: it records every command that would go over
// the wire, and answers as the test says, by hand or by a script per command name. The
// routing to local handlers and plugins, and the callbacks, are the real ones.
class ScriptedServer : public ZRServerInterface
{
    Q_OBJECT
public:
    // Returns the answer to a request; Command::answer and Command::failure build one.
    using Script = std::function<Command(const Command &request)>;

    explicit ScriptedServer(QObject *parent = nullptr);

    // Everything sent to the server so far, oldest first.
    const QList<Command> &sent() const { return m_sent; }
    // The last command of that name, or an empty one.
    Command lastSent(const QString &name) const;
    void clearSent() { m_sent.clear(); }

    // Answers every later request of that name at once, from the event loop.
    void script(const QString &name, Script script);
    void unscript(const QString &name);

    // Answers one recorded request now.
    void answer(const Command &request, qint32 status, const QByteArray &data = {});
    void answerOk(const Command &request, const QByteArray &data = {});
    void answerFailure(const Command &request, qint32 status, const QString &text);
    // Delivers a push (id 0) as if it came from the server.
    void push(const QString &name, const QByteArray &data);
    // Simulates a dropped connection: every waiting request fails.
    void dropConnection();
    void setOnline(bool online) { m_online = online; }

signals:
    void commandSent(const Command &command);

protected:
    bool canTransmit() const override { return m_online; }
    void transmit(const Command &command) override;

private:
    QList<Command> m_sent;
    QHash<QString, Script> m_scripts;
    bool m_online = true;
};
