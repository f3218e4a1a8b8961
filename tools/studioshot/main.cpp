// Starts the studio on a fresh demo database in a temporary folder, logs in as root and saves
// the main window, showing the screen and tab asked for, as a PNG file for the documentation.
#include <app/startup/logindialog.h>
#include <app/startup/studiocontroller.h>
#include <app/window/mainwindow.h>

#include <host/core/settings.h>
#include <host/gui/widgets/pluginwidget.h>
#include <server/engine/demo/demoorganisation.h>

#include <KPasswordLineEdit>

#include <QApplication>
#include <QCommandLineParser>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Saves the studio's main window with demo data as a PNG file."));
    parser.addHelpOption();
    const QCommandLineOption plugins(QStringLiteral("plugins"), QStringLiteral("Plugin folder."),
                                     QStringLiteral("DIR"), QStringLiteral(ZR_PLUGIN_DIR));
    const QCommandLineOption screen(QStringLiteral("screen"),
                                    QStringLiteral("Plugin name of the screen to show."),
                                    QStringLiteral("NAME"));
    const QCommandLineOption tab(QStringLiteral("tab"), QStringLiteral("Tab of that screen."),
                                 QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption settle(QStringLiteral("settle"),
                                    QStringLiteral("Milliseconds to let the screen finish "
                                                   "its own requests before the shot."),
                                    QStringLiteral("MS"), QStringLiteral("1500"));
    parser.addOptions({plugins, screen, tab, settle});
    parser.addPositionalArgument(QStringLiteral("output"), QStringLiteral("The PNG file."));
    parser.process(app);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(1);
    const QString output = parser.positionalArguments().constFirst();

    QTemporaryDir folder;
    Settings::useFile(folder.filePath(QStringLiteral("studio.ini")));
    StudioOptions options;
    options.demo = true;
    options.databasePath = folder.filePath(QStringLiteral("demo.db"));
    options.pluginDir = parser.value(plugins);
    StudioController studio(options);
    QTextStream err(stderr);

    bool tried = false;
    QObject::connect(&studio, &StudioController::phaseChanged, &app, [&](StudioController::Phase phase) {
        if (phase == StudioController::Phase::Login) {
            // After the studio has finished preparing the dialog for this phase.
            QTimer::singleShot(0, &app, [&] {
                LoginDialog *dialog = studio.loginDialog();
                if (tried) {
                    err << "login refused: " << dialog->messageText() << '\n';
                    app.exit(1);
                    return;
                }
                tried = true;
                dialog->findChild<QLineEdit *>(QStringLiteral("loginEdit"))
                    ->setText(QStringLiteral("root"));
                dialog->findChild<KPasswordLineEdit *>(QStringLiteral("passwordEdit"))
                    ->setPassword(zeral::server::DemoOrganisation::demoPassword());
                dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
            });
        } else if (phase == StudioController::Phase::Running) {
            MainWindow *window = studio.mainWindow();
            window->resize(1280, 760);
            if (parser.isSet(screen)) {
                PluginWidget *shown = window->screenByName(parser.value(screen));
                if (!shown || !window->showTab(shown, parser.value(tab).toInt())) {
                    err << "no such screen or tab: " << parser.value(screen) << '\n';
                    app.exit(1);
                    return;
                }
            }
            QTimer::singleShot(parser.value(settle).toInt(), window, [&app, window, output, &err] {
                const bool saved = window->grab().save(output);
                err << (saved ? "wrote " : "could not write ") << output << '\n';
                app.exit(saved ? 0 : 1);
            });
        }
    });
    QObject::connect(&studio, &StudioController::finished, &app, &QApplication::exit);
    QTimer::singleShot(180000, &app, [&app, &err] {
        err << "the studio did not come up within 3 minutes\n";
        app.exit(1);
    });
    studio.start();
    return app.exec();
}
