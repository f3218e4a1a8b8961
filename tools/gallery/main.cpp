#include "sections.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>
#include <QWidget>

bool gallery::shoot(QWidget *widget, const QDir &dir, const QString &name)
{
    widget->show();
    QCoreApplication::processEvents();
    const QString path = dir.filePath(name + QLatin1String(".png"));
    const bool written = widget->grab().save(path);
    QTextStream(stdout) << (written ? "wrote " : "could not write ") << path << '\n';
    return written;
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Renders every host widget into PNG files for the documentation."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("folder"),
                                 QStringLiteral("Where to write (default docs/screenshots)."));
    parser.process(app);
    const QStringList args = parser.positionalArguments();
    QDir dir(args.isEmpty() ? QStringLiteral("docs/screenshots") : args.first());
    if (!dir.mkpath(QStringLiteral("."))) {
        QTextStream(stderr) << "cannot create " << dir.path() << '\n';
        return 1;
    }
    gallery::shootWidgets(dir);
    gallery::shootWizards(dir);
    gallery::shootUserRoles(dir);
    gallery::shootUserProperties(dir);
    gallery::shootUserPermissions(dir);
    gallery::shootNewUserPages(dir);
    return 0;
}
