// The reader of USB fingerprint readers, over libfprint's own virtual image reader: enrolment
// and identification by the real library on drawn fingers, templates it can't read, a reader
// that is busy or unplugged, and the confirmation widget reading through it or, failing
// that, through the simulated reader with a notice.
#include "virtualfingerprintscanner.h"

#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/fingerprintreaderfactory.h>
#include <host/gui/biometrics/libfprintcontext.h>
#include <host/gui/biometrics/libfprintreader.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <shared/metatypes.h>

#include <QAbstractEventDispatcher>
#include <QLockFile>
#include <QSignalSpy>
#include <QtTest>

using zeral::TEMPLATE_DATA;
using zeral::TEMPLATES_HASH;
using zeral::TYPE_ID;
using Failure = FingerprintReader::Failure;

namespace {

constexpr int Wait = 20000; // the library's minutiae extraction takes a moment per image

TEMPLATE_DATA libfprintTemplate(const QByteArray &bytes)
{
    TEMPLATE_DATA data;
    data.format = FingerprintReader::LibfprintFormat;
    data.data = bytes;
    return data;
}

TEMPLATE_DATA simulatedTemplate()
{
    TEMPLATE_DATA data;
    data.format = FingerprintReader::SimulatedFormat;
    data.data = SimulatedFingerprintReader::newTemplate();
    return data;
}

} // namespace

class TestLibfprintReader : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void enrols();
    void identifies_data();
    void identifies();
    void unreadableTemplatesAreSkipped();
    void nothingToIdentifyAgainst();
    void busy_data();
    void busy();
    void startsAgainWhileClosing();
    void widgetGrantsThroughTheLibrary();
    void widgetFallsBackWhenBusy();
    void settingChoosesTheKind_data();
    void settingChoosesTheKind();
    void unpluggedDuringAScan(); // last: the reader is gone afterwards

private:
    // Enrols the finger of `pattern` through a reader of its own; empty on failure.
    QByteArray enrol(int pattern, int *progressReports = nullptr);
    // Puts the finger of `pattern` on the reader each time it wants one, `times` times.
    void feed(FingerprintReader *reader, int pattern, int times = 1);
    TEMPLATES_HASH gallery() const;

    VirtualFingerprintScanner m_scanner; // before the first libfprint context
    QHash<int, QByteArray> m_prints;     // pattern → its enrolled print
};

void TestLibfprintReader::initTestCase()
{
    qRegisterMetaType<Failure>();
    // Qt's GLib dispatcher runs libfprint's callbacks inside the Qt event loop; without it
    // (ctest runs this test a second time with QT_NO_GLIB) a timer iterates GLib instead.
    const bool glib = !qEnvironmentVariableIsSet("QT_NO_GLIB");
    if (!glib)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("doesn't run GLib"));
    QCOMPARE(LibfprintContext::instance()->runsInsideGlibDispatcher(), glib);
    QCOMPARE(QAbstractEventDispatcher::instance()->inherits("QEventDispatcherGlib"), glib);
    QVERIFY2(LibfprintReader::isDevicePresent(), "libfprint didn't find its virtual reader");
    LibfprintReader reader;
    QVERIFY(reader.name().contains(QStringLiteral("Virtual"), Qt::CaseInsensitive));
    QVERIFY(!reader.isSimulated());
}

QByteArray TestLibfprintReader::enrol(int pattern, int *progressReports)
{
    LibfprintReader reader;
    feed(&reader, pattern, 100);
    QSignalSpy enrolled(&reader, &FingerprintReader::enrolled);
    QSignalSpy progress(&reader, &FingerprintReader::progress);
    QSignalSpy failed(&reader, &FingerprintReader::errorOccurred);
    if (!reader.startEnrolment() || !enrolled.wait(Wait) || !failed.isEmpty()) {
        qWarning() << "enrolment failed:" << failed;
        return QByteArray();
    }
    if (progressReports)
        *progressReports = progress.count();
    if (enrolled.first().at(0).toUInt() != FingerprintReader::LibfprintFormat)
        return QByteArray();
    return enrolled.first().at(1).toByteArray();
}

void TestLibfprintReader::feed(FingerprintReader *reader, int pattern, int times)
{
    auto left = std::make_shared<int>(times);
    connect(reader, &FingerprintReader::fingerWanted, reader, [this, pattern, left] {
        if ((*left)-- > 0)
            QVERIFY(m_scanner.put(pattern));
    });
}

TEMPLATES_HASH TestLibfprintReader::gallery() const
{
    // Owner 7 has fingers 1 and 2, owner 9 finger 4; owner 3 only a simulated one.
    return {{7, libfprintTemplate(m_prints.value(1))},
            {7, libfprintTemplate(m_prints.value(2))},
            {9, libfprintTemplate(m_prints.value(4))},
            {3, simulatedTemplate()}};
}

void TestLibfprintReader::enrols()
{
    int progressReports = 0;
    for (int pattern : {1, 2, 4}) {
        m_prints.insert(pattern, enrol(pattern, &progressReports));
        QVERIFY2(!m_prints.value(pattern).isEmpty(), "no print was enrolled");
        // The virtual image reader reads a finger five times for a print.
        QCOMPARE(progressReports, 5);
    }
    QVERIFY(m_prints.value(1) != m_prints.value(2));
}

void TestLibfprintReader::identifies_data()
{
    QTest::addColumn<int>("pattern");
    QTest::addColumn<TYPE_ID>("owner");
    QTest::addRow("first finger of 7") << 1 << TYPE_ID(7);
    QTest::addRow("second finger of 7") << 2 << TYPE_ID(7);
    QTest::addRow("finger of 9") << 4 << TYPE_ID(9);
    QTest::addRow("a finger nobody enrolled") << 5 << TYPE_ID(0);
    QTest::addRow("another one nobody enrolled") << 6 << TYPE_ID(0);
}

void TestLibfprintReader::identifies()
{
    QFETCH(int, pattern);
    QFETCH(TYPE_ID, owner);
    LibfprintReader reader;
    feed(&reader, pattern);
    QSignalSpy identified(&reader, &FingerprintReader::identified);
    QSignalSpy wanted(&reader, &FingerprintReader::fingerWanted);
    QVERIFY(reader.startIdentification(gallery()));
    QVERIFY(reader.isActive());
    QVERIFY(identified.wait(Wait));
    QCOMPARE(identified.first().at(0).value<TYPE_ID>(), owner);
    // It reads on, finger after finger, until stopped.
    QTRY_VERIFY_WITH_TIMEOUT(wanted.count() > 1, Wait);
    QVERIFY(reader.isActive());
    reader.stop();
    QVERIFY(!reader.isActive());
}

void TestLibfprintReader::unreadableTemplatesAreSkipped()
{
    // Garbage, and prints cut short or with a byte changed: the library itself would abort
    // the process on some of these.
    const QByteArray print = m_prints.value(4);
    QByteArray changed = m_prints.value(1);
    changed[changed.size() / 2] = char(changed.at(changed.size() / 2) ^ 0x5a);
    TEMPLATES_HASH templates = gallery();
    templates.insert(11, libfprintTemplate("not a print at all"));
    templates.insert(12, libfprintTemplate(print.left(print.size() / 2)));
    templates.insert(13, libfprintTemplate(print.left(print.size() - 1)));
    templates.insert(14, libfprintTemplate(print.left(3)));
    templates.insert(15, libfprintTemplate(changed));
    for (TYPE_ID skipped : {11, 12, 13, 14}) {
        QTest::ignoreMessage(
            QtWarningMsg,
            QRegularExpression(QStringLiteral("skipped an unreadable fingerprint template of "
                                              "user %1 ")
                                   .arg(skipped)));
    }
    LibfprintReader reader;
    feed(&reader, 4);
    QSignalSpy identified(&reader, &FingerprintReader::identified);
    QVERIFY(reader.startIdentification(templates));
    QVERIFY(identified.wait(Wait));
    QCOMPARE(identified.first().at(0).value<TYPE_ID>(), TYPE_ID(9));
}

void TestLibfprintReader::nothingToIdentifyAgainst()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("unreadable fingerprint template"));
    LibfprintReader reader;
    QSignalSpy failed(&reader, &FingerprintReader::errorOccurred);
    QVERIFY(!reader.startIdentification(
        {{3, simulatedTemplate()}, {11, libfprintTemplate(QByteArray(300, 'x'))}}));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().at(0).value<Failure>(), Failure::Other);
    QVERIFY(!reader.isActive());
}

void TestLibfprintReader::busy_data()
{
    QTest::addColumn<bool>("otherProcess");
    QTest::addRow("another studio holds the reader") << true;
    QTest::addRow("another window of this studio reads") << false;
}

void TestLibfprintReader::busy()
{
    QFETCH(bool, otherProcess);
    // Another studio is known by its lock; a lock held by a live process is never stale.
    QLockFile otherStudio(LibfprintContext::lockFilePath(LibfprintContext::instance()->device()));
    LibfprintReader first;
    if (otherProcess) {
        // The reader of the test before may still be closing.
        QTRY_VERIFY_WITH_TIMEOUT(!LibfprintContext::instance()->isClaimed(), Wait);
        QVERIFY(otherStudio.tryLock(0));
    } else {
        QSignalSpy wanted(&first, &FingerprintReader::fingerWanted);
        QVERIFY(first.startEnrolment());
        QVERIFY(wanted.wait(Wait));
    }

    LibfprintReader second;
    QSignalSpy failed(&second, &FingerprintReader::errorOccurred);
    QVERIFY(!second.startEnrolment());
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().at(0).value<Failure>(), Failure::DeviceBusy);
    QVERIFY(failed.first().at(1).toString().contains(QStringLiteral("занят")));
    QVERIFY(!second.isActive());

    // Once the holder lets go, the reader is free again.
    first.stop();
    otherStudio.unlock();
    feed(&second, 2);
    QSignalSpy identified(&second, &FingerprintReader::identified);
    QVERIFY(second.startIdentification(gallery()));
    QVERIFY(identified.wait(Wait));
    QCOMPARE(identified.first().at(0).value<TYPE_ID>(), TYPE_ID(7));
}

void TestLibfprintReader::startsAgainWhileClosing()
{
    LibfprintReader reader;
    QSignalSpy wanted(&reader, &FingerprintReader::fingerWanted);
    QVERIFY(reader.startIdentification(gallery()));
    QVERIFY(wanted.wait(Wait));
    reader.stop();
    QVERIFY(!reader.isActive());
    // Started again before the library has closed the device: it waits for the close.
    feed(&reader, 1);
    QSignalSpy identified(&reader, &FingerprintReader::identified);
    QVERIFY(reader.startIdentification(gallery()));
    QVERIFY(reader.isActive());
    QVERIFY(identified.wait(Wait));
    QCOMPARE(identified.first().at(0).value<TYPE_ID>(), TYPE_ID(7));
}

void TestLibfprintReader::widgetGrantsThroughTheLibrary()
{
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Libfprint);
    AuthorizationWidget widget;
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Simulated);
    auto *reader = qobject_cast<LibfprintReader *>(widget.reader());
    QVERIFY(reader);
    QVERIFY(widget.readerNotice().isEmpty());
    QSignalSpy granted(&widget, &AuthorizationWidget::granted);
    widget.addGrantVariant(QStringLiteral("Служба охраны"), 0, 1);
    widget.setGrantedUids(0, 0, {9});
    widget.setTemplates(gallery());
    // First a stranger, then 7 who may not confirm, then 9.
    auto order = std::make_shared<QList<int>>(QList<int>{5, 1, 4});
    connect(reader, &FingerprintReader::fingerWanted, this, [this, order] {
        if (!order->isEmpty())
            QVERIFY(m_scanner.put(order->takeFirst()));
    });
    widget.start();
    QVERIFY(granted.wait(Wait));
    QCOMPARE(granted.last().at(0).toBool(), false);
    QVERIFY(widget.statusText().contains(QStringLiteral("не распознан")));
    QTRY_VERIFY_WITH_TIMEOUT(widget.identifiedUids() == QList<TYPE_ID>{7}, Wait);
    QVERIFY(!widget.isGranted());
    QTRY_VERIFY_WITH_TIMEOUT(widget.isGranted(), Wait);
    QCOMPARE(widget.identifiedUids(), (QList<TYPE_ID>{7, 9}));
    QTRY_VERIFY(!reader->isActive()); // granted: the reader stops
}

void TestLibfprintReader::widgetFallsBackWhenBusy()
{
    QLockFile otherStudio(LibfprintContext::lockFilePath(LibfprintContext::instance()->device()));
    QTRY_VERIFY_WITH_TIMEOUT(!LibfprintContext::instance()->isClaimed(), Wait);
    QVERIFY(otherStudio.tryLock(0));
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Libfprint);
    AuthorizationWidget widget;
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Simulated);
    QVERIFY(qobject_cast<LibfprintReader *>(widget.reader()));
    const TEMPLATE_DATA simulated = simulatedTemplate();
    widget.addGrantVariant(QStringLiteral("Служба охраны"), 0, 1);
    widget.setGrantedUids(0, 0, {3, 7});
    widget.setTemplates({{3, simulated}, {7, libfprintTemplate(m_prints.value(1))}});
    widget.start();
    auto *standIn = qobject_cast<SimulatedFingerprintReader *>(widget.reader());
    QVERIFY(standIn);
    QVERIFY2(widget.readerNotice().contains(QStringLiteral("занят")),
             qPrintable(widget.readerNotice()));
    QVERIFY(widget.readerNotice().contains(QStringLiteral("имитацией")));
    standIn->touch(simulated);
    QVERIFY(widget.isGranted());
}

void TestLibfprintReader::settingChoosesTheKind_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("real");
    QTest::addRow("libfprint") << "libfprint" << true;
    QTest::addRow("written otherwise") << " LibFPrint " << true;
    QTest::addRow("simulated") << "simulated" << false;
    QTest::addRow("unset: the default") << "" << true;
    QTest::addRow("unknown: the default") << "usb" << true;
}

void TestLibfprintReader::settingChoosesTheKind()
{
    using Kind = FingerprintReaderFactory::Kind;
    QFETCH(QString, value);
    QFETCH(bool, real);
    if (value == QLatin1String("usb"))
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("unknown fingerprint reader kind"));
    const Kind kind = FingerprintReaderFactory::kindFromSetting(value, Kind::Libfprint);
    QCOMPARE(kind == Kind::Libfprint, real);
    FingerprintReaderFactory::setPreferredKind(kind);
    QString notice;
    std::unique_ptr<FingerprintReader> reader(FingerprintReaderFactory::create(nullptr, &notice));
    FingerprintReaderFactory::setPreferredKind(Kind::Simulated);
    QCOMPARE(reader->isSimulated(), !real);
    QVERIFY(notice.isEmpty());
}

void TestLibfprintReader::unpluggedDuringAScan()
{
    LibfprintReader reader;
    QSignalSpy wanted(&reader, &FingerprintReader::fingerWanted);
    QSignalSpy failed(&reader, &FingerprintReader::errorOccurred);
    QVERIFY(reader.startEnrolment());
    QVERIFY(wanted.wait(Wait));
    QVERIFY(m_scanner.unplug());
    QVERIFY(failed.wait(Wait));
    QCOMPARE(failed.first().at(0).value<Failure>(), Failure::DeviceRemoved);
    QVERIFY(failed.first().at(1).toString().contains(QStringLiteral("отключен")));
    QTRY_VERIFY(!reader.isActive());

    // Once it is gone, the screens read through the simulated reader and say why.
    QTRY_VERIFY_WITH_TIMEOUT(!LibfprintReader::isDevicePresent(), Wait);
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Libfprint);
    QString notice;
    std::unique_ptr<FingerprintReader> standIn(FingerprintReaderFactory::create(nullptr, &notice));
    FingerprintReaderFactory::setPreferredKind(FingerprintReaderFactory::Kind::Simulated);
    QVERIFY(standIn->isSimulated());
    QVERIFY(notice.contains(QStringLiteral("не найден")));
    QSignalSpy noDevice(&reader, &FingerprintReader::errorOccurred);
    QVERIFY(!reader.startEnrolment());
    QCOMPARE(noDevice.first().at(0).value<Failure>(), Failure::NoDevice);
}

QTEST_MAIN(TestLibfprintReader)
#include "tst_libfprintreader.moc"
