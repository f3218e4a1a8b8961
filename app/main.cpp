#include <app/startup/studiocontroller.h>
#include <app/startup/studiolanguage.h>
#include <app/startup/studiooptions.h>

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Zeral"));
    QApplication::setApplicationName(QStringLiteral("zr-studio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Zeral"));
    QApplication::setApplicationVersion(QStringLiteral("0.1"));
    QApplication::setQuitOnLastWindowClosed(false); // the studio ends when it says so

    // Before anything speaks to the operator: a text is translated when it is made.
    StudioLanguage language;
    language.install(StudioLanguage::configuredLanguage());

    StudioOptions options;
    QString error;
    if (!StudioOptions::parse(app.arguments(), &options, &error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return error.startsWith(QLatin1String("Usage")) ? 0 : 1;
    }
    StudioController studio(options);
    QObject::connect(&studio, &StudioController::finished, &app, &QApplication::exit,
                     Qt::QueuedConnection);
    studio.start();
    return app.exec();
}
