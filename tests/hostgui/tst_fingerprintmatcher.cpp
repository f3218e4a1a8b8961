#include <host/gui/biometrics/fingerprintmatcher.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>

#include <QSignalSpy>
#include <QtTest>

using zeral::TEMPLATE_DATA;
using zeral::TYPE_ID;

class TestFingerprintMatcher : public QObject
{
    Q_OBJECT
private slots:
    void identify_data();
    void identify();
};

void TestFingerprintMatcher::identify_data()
{
    QTest::addColumn<int>("noisePerMille");
    QTest::addColumn<bool>("otherFormat");
    QTest::addColumn<bool>("truncated");
    QTest::addColumn<TYPE_ID>("expected");

    QTest::addRow("a clean touch") << 0 << false << false << TYPE_ID(7);
    QTest::addRow("a usual touch") << 30 << false << false << TYPE_ID(7);
    QTest::addRow("a smeared touch, below the threshold") << 150 << false << false << TYPE_ID(0);
    QTest::addRow("another reader's format") << 0 << true << false << TYPE_ID(0);
    QTest::addRow("a sample of another size") << 0 << false << true << TYPE_ID(0);
}

void TestFingerprintMatcher::identify()
{
    QFETCH(int, noisePerMille);
    QFETCH(bool, otherFormat);
    QFETCH(bool, truncated);
    QFETCH(TYPE_ID, expected);

    TEMPLATE_DATA touched;
    touched.format = FingerprintReader::SimulatedFormat;
    touched.data = SimulatedFingerprintReader::newTemplate();
    TEMPLATE_DATA someoneElse = touched;
    someoneElse.data = SimulatedFingerprintReader::newTemplate();
    FingerprintMatcher matcher;
    matcher.setTemplates({{3, someoneElse}, {7, touched}});

    SimulatedFingerprintReader reader;
    reader.setNoisePerMille(noisePerMille);
    QSignalSpy captured(&reader, &SimulatedFingerprintReader::sampleCaptured);
    reader.touch(touched);
    QCOMPARE(captured.count(), 0); // a stopped reader reads nothing
    reader.startEnrolment();
    reader.touch(touched);
    QCOMPARE(captured.count(), 1);

    const quint32 format = otherFormat ? quint32(FingerprintReader::SimulatedFormat + 1)
                                       : captured.first().at(0).toUInt();
    QByteArray sample = captured.first().at(1).toByteArray();
    if (truncated)
        sample.chop(1);
    QCOMPARE(matcher.identify(format, sample), expected);
}

QTEST_MAIN(TestFingerprintMatcher)
#include "tst_fingerprintmatcher.moc"
