#include <host/gui/widgets/zrguiglobals.h>

#include <QDirIterator>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

namespace {
// Names that the code builds at run time (objectIcon of a type read from data, icons of
// states chosen by a value), so a scan of the sources can't see them.
const QStringList BuiltAtRunTime = {QStringLiteral("userctl"),
                                    QStringLiteral("action-add"),
                                    QStringLiteral("action-remove"),
                                    QStringLiteral("action-change_password"),
                                    QStringLiteral("action-check"),
                                    QStringLiteral("action-uncheck"),
                                    QStringLiteral("action-config"),
                                    QStringLiteral("action-device_reset"),
                                    QStringLiteral("action-email"),
                                    QStringLiteral("action-finger"),
                                    QStringLiteral("action-lock"),
                                    QStringLiteral("action-unlock"),
                                    QStringLiteral("action-login"),
                                    QStringLiteral("action-offline"),
                                    QStringLiteral("action-update"),
                                    QStringLiteral("common-cancel"),
                                    QStringLiteral("common-mobile"),
                                    QStringLiteral("common-offline"),
                                    QStringLiteral("common-online"),
                                    QStringLiteral("common-warning"),
                                    QStringLiteral("object-OT_USER"),
                                    QStringLiteral("object-OT_ROLE"),
                                    QStringLiteral("object-OT_WORKER"),
                                    QStringLiteral("object-OT_WORKER-d"),
                                    QStringLiteral("object-OT_DEPARTMENT"),
                                    QStringLiteral("object-OT_FIRM"),
                                    QStringLiteral("object-OT_SUBJECTROOT"),
                                    QStringLiteral("object-OT_PLACING"),
                                    QStringLiteral("object-OT_REPORT"),
                                    QStringLiteral("object-OT_ACCESS_POLICY"),
                                    QStringLiteral("object-OT_ACCESS_POLICY_1"),
                                    QStringLiteral("object-OT_JOB"),
                                    QStringLiteral("object-OT_DATABASE"),
                                    QStringLiteral("object-OT_MONITORING_SETTINGS"),
                                    QStringLiteral("object-OT_TERM_ZR_NOVA_E"),
                                    QStringLiteral("object-OT_TERM_ZR_DESK"),
                                    QStringLiteral("object-OT_TERM_VIRTUAL_CHECKPOINT"),
                                    QStringLiteral("object-OT_TERM_EXTERNAL_DEVICE")};

// Every theme icon name written in the sources, with the files that use it.
QMap<QString, QStringList> scanSources()
{
    // A whole literal argument only: a name put together at run time is no name.
    const QString literal = QStringLiteral("\\(\\s*(?:\"([^\"]+)\"|(?:QStringLiteral|QLatin1String|"
                                           "QString)\\s*\\(\\s*\"([^\"]+)\"\\s*\\))"
                                           "\\s*[,)]");
    const QRegularExpression fromTheme(QStringLiteral("fromTheme") + literal);
    const QRegularExpression objectIcon(QStringLiteral("objectIcon") + literal);
    const QRegularExpression uiTheme(QStringLiteral("<iconset\\s+theme=\"([^\"]+)\""));

    QMap<QString, QStringList> names;
    const QDir root(QStringLiteral(ZR_SOURCE_DIR));
    const QStringList folders = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &folder : folders) {
        if (folder.startsWith(QLatin1String("build")) || folder.startsWith(QLatin1Char('.')))
            continue;
        QDirIterator it(root.filePath(folder),
                        {QStringLiteral("*.cpp"), QStringLiteral("*.h"), QStringLiteral("*.ui")},
                        QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QString text = QString::fromUtf8(file.readAll());
            const QString where = root.relativeFilePath(path);
            const auto collect = [&](const QRegularExpression &pattern, const QString &prefix) {
                auto matches = pattern.globalMatch(text);
                while (matches.hasNext()) {
                    const QRegularExpressionMatch match = matches.next();
                    const QString name = match.captured(match.lastCapturedIndex());
                    names[prefix + name].append(where);
                }
            };
            collect(fromTheme, QString());
            collect(objectIcon, QStringLiteral("object-"));
            collect(uiTheme, QString());
        }
    }
    return names;
}

bool hasInk(const QPixmap &pixmap)
{
    const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) > 0)
                return true;
        }
    }
    return false;
}
} // namespace

class TestIconTheme : public QObject
{
    Q_OBJECT
private slots:
    void themeIsActive();
    void everyNameUsedIsOurs_data();
    void everyNameUsedIsOurs();
};

void TestIconTheme::themeIsActive()
{
    // Installed by the library at start, without a call from the program.
    QCOMPARE(QIcon::themeName(), ZRGuiGlobals::IconThemeName);
    QVERIFY(QIcon::themeSearchPaths().contains(QStringLiteral(":/icons")));
    QVERIFY(!ZRGuiGlobals::objectIcon(QStringLiteral("OT_USER")).isNull());
}

void TestIconTheme::everyNameUsedIsOurs_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("usedIn");
    const QMap<QString, QStringList> scanned = scanSources();
    // The scan must see the library's own uses, or it scans nothing at all.
    QVERIFY(scanned.contains(QStringLiteral("action-clear")));
    QMap<QString, QStringList> all = scanned;
    for (const QString &name : BuiltAtRunTime)
        all[name].append(QStringLiteral("names built at run time"));
    for (auto it = all.cbegin(); it != all.cend(); ++it)
        QTest::addRow("%s", qPrintable(it.key()))
            << it.key() << it.value().join(QLatin1String(", "));
}

void TestIconTheme::everyNameUsedIsOurs()
{
    QFETCH(QString, name);
    QFETCH(QString, usedIn);
    const QString file
        = QStringLiteral(":/icons/%1/scalable/%2.svg").arg(ZRGuiGlobals::IconThemeName, name);
    if (!QFile::exists(file))
        QFAIL(qPrintable(
            QStringLiteral("the theme has no icon \"%1\" (used in %2)").arg(name, usedIn)));
    const QIcon icon = QIcon::fromTheme(name);
    QVERIFY(!icon.isNull());
    for (int size : {16, 24}) {
        const QPixmap pixmap = icon.pixmap(size, size);
        QCOMPARE(pixmap.size(), QSize(size, size));
        QVERIFY2(hasInk(pixmap), qPrintable(name));
    }
}

QTEST_MAIN(TestIconTheme)
#include "tst_icontheme.moc"
