#include <host/gui/biometrics/authorizationwidget.h>
#include <host/gui/biometrics/simulatedfingerprintreader.h>
#include <shared/metatypes.h>

#include <QSignalSpy>
#include <QtTest>

using zeral::TEMPLATE_DATA;
using zeral::TYPE_ID;

namespace {

using Places = QMap<int, QList<TYPE_ID>>;

TEMPLATE_DATA enrolledFinger()
{
    TEMPLATE_DATA finger;
    finger.format = FingerprintReader::SimulatedFormat;
    finger.data = SimulatedFingerprintReader::newTemplate();
    return finger;
}

} // namespace

class TestAuthorizationWidget : public QObject
{
    Q_OBJECT
private slots:
    void grants_data();
    void grants();
    void nothingBeforeStart();
    void grantedStopsTheReader();
};

void TestAuthorizationWidget::grants_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<Places>("places");
    QTest::addColumn<QList<TYPE_ID>>("touches"); // 0: a finger nobody enrolled
    QTest::addColumn<bool>("expected");

    const Places holders{{0, {1, 2, 3}}};
    QTest::addRow("one holder out of many") << 1 << holders << QList<TYPE_ID>{2} << true;
    QTest::addRow("two distinct people needed") << 2 << holders << QList<TYPE_ID>{1, 3} << true;
    QTest::addRow("one of two is not enough") << 2 << holders << QList<TYPE_ID>{1} << false;
    QTest::addRow("the same person twice is not enough")
        << 2 << holders << QList<TYPE_ID>{1, 1} << false;
    QTest::addRow("a person without the right doesn't count")
        << 1 << holders << QList<TYPE_ID>{9} << false;
    QTest::addRow("nor with one who has it") << 2 << holders << QList<TYPE_ID>{9, 2} << false;
    QTest::addRow("an unknown finger") << 1 << holders << QList<TYPE_ID>{0} << false;
    QTest::addRow("each place its own people, wrong pair")
        << 2 << Places{{0, {1}}, {1, {2, 3}}} << QList<TYPE_ID>{2, 3} << false;
    QTest::addRow("each place its own people, right pair, any order")
        << 2 << Places{{0, {1}}, {1, {1, 2}}} << QList<TYPE_ID>{1, 2} << true;
    QTest::addRow("nobody may grant") << 1 << Places{} << QList<TYPE_ID>{1} << false;
}

void TestAuthorizationWidget::grants()
{
    QFETCH(int, count);
    QFETCH(Places, places);
    QFETCH(QList<TYPE_ID>, touches);
    QFETCH(bool, expected);

    // Everybody has a finger enrolled, person 2 two of them.
    QMultiHash<TYPE_ID, TEMPLATE_DATA> templates;
    QHash<TYPE_ID, TEMPLATE_DATA> fingerOf;
    for (TYPE_ID uid : {1u, 2u, 3u, 9u}) {
        fingerOf.insert(uid, enrolledFinger());
        templates.insert(uid, fingerOf.value(uid));
    }
    templates.insert(2, enrolledFinger());

    AuthorizationWidget widget;
    QSignalSpy granted(&widget, &AuthorizationWidget::granted);
    widget.addGrantVariant(QStringLiteral("Администратор"), 0, count);
    for (auto place = places.cbegin(); place != places.cend(); ++place)
        widget.setGrantedUids(0, place.key(), place.value());
    widget.setTemplates(templates);
    widget.start();
    QVERIFY(widget.isEnabled());

    auto *reader = qobject_cast<SimulatedFingerprintReader *>(widget.reader());
    QVERIFY(reader);
    QVERIFY(reader->isSimulated());
    for (TYPE_ID uid : qAsConst(touches)) {
        if (uid == 0)
            reader->touchUnknownFinger();
        else
            reader->touch(fingerOf.value(uid));
    }

    QCOMPARE(widget.isGranted(), expected);
    QVERIFY(!granted.isEmpty());
    QCOMPARE(granted.last().first().toBool(), expected);
}

void TestAuthorizationWidget::nothingBeforeStart()
{
    const TEMPLATE_DATA finger = enrolledFinger();
    AuthorizationWidget widget;
    widget.addGrantVariant(QStringLiteral("Администратор"), 0, 1);
    widget.setGrantedUids(0, 0, {5});
    widget.setTemplates({{5, finger}});
    QVERIFY(!widget.isEnabled());

    static_cast<SimulatedFingerprintReader *>(widget.reader())->touch(finger);
    QVERIFY(!widget.isGranted());
    QVERIFY(widget.identifiedUids().isEmpty());
}

void TestAuthorizationWidget::grantedStopsTheReader()
{
    const TEMPLATE_DATA finger = enrolledFinger();
    AuthorizationWidget widget;
    widget.addGrantVariant(QStringLiteral("Администратор"), 0, 1);
    widget.setGrantedUids(0, 0, {5});
    widget.setTemplates({{5, finger}});
    widget.start();
    QVERIFY(widget.reader()->isActive());
    static_cast<SimulatedFingerprintReader *>(widget.reader())->touch(finger);
    QVERIFY(widget.isGranted());
    QVERIFY(!widget.reader()->isActive());
}

QTEST_MAIN(TestAuthorizationWidget)
#include "tst_authorizationwidget.moc"
