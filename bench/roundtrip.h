#pragma once

// Waiting for the engine from a benchmark's own thread: the event loop runs until a condition
// holds, and one request's round trip through the studio's router is timed.

#include <host/core/command.h>
#include <host/core/zrserverinterface.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cstdio>
#include <cstdlib>

namespace bench {

// Runs the event loop until `done` holds or `timeoutMs` passes; false on the timeout.
template<class Done>
bool waitFor(Done done, int timeoutMs = 60000)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    }
    return true;
}

// Sends one command through the router and waits for its answer; the milliseconds it took.
// No answer within a minute ends the program.
inline double roundTrip(ZRServerInterface &router, const Command &request,
                        Command *answerOut = nullptr)
{
    bool answered = false;
    QElapsedTimer clock;
    clock.start();
    router.send(request, [&](Command &answer) {
        answered = true;
        if (answerOut)
            *answerOut = answer;
    });
    if (!waitFor([&] { return answered; })) {
        std::fprintf(stderr, "%s: no answer to %s\n",
                     qPrintable(QCoreApplication::applicationName()), qPrintable(request.name));
        std::exit(1);
    }
    return clock.nsecsElapsed() / 1e6;
}

} // namespace bench
