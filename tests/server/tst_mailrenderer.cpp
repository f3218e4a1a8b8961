#include <server/engine/mail/mailrenderer.h>

#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace zeral;
using namespace zeral::server;

namespace {

// One entity of a message: its header fields (unfolded, names in lower case) and its body.
struct Entity
{
    QHash<QByteArray, QByteArray> headers;
    QByteArray body;
};

Entity parse(const QByteArray &bytes)
{
    Entity entity;
    const int split = bytes.indexOf("\r\n\r\n");
    entity.body = bytes.mid(split + 4);
    for (const QByteArray &line : bytes.left(split).replace("\r\n ", " ").split('\n')) {
        const int colon = line.indexOf(':');
        entity.headers.insert(line.left(colon).toLower(), line.mid(colon + 1).trimmed());
    }
    return entity;
}

QString decodeWords(const QByteArray &value)
{
    static const QRegularExpression word(QStringLiteral("=\\?UTF-8\\?B\\?([A-Za-z0-9+/=]*)\\?="));
    QByteArray utf8;
    for (auto it = word.globalMatch(QString::fromLatin1(value)); it.hasNext();)
        utf8 += QByteArray::fromBase64(it.next().captured(1).toLatin1());
    return utf8.isEmpty() ? QString::fromLatin1(value) : QString::fromUtf8(utf8);
}

QString decodeText(const Entity &entity)
{
    return QString::fromUtf8(QByteArray::fromBase64(entity.body));
}

// The parts of a multipart/mixed entity, in order; none if it isn't one.
QList<Entity> partsOf(const Entity &entity)
{
    const QRegularExpressionMatch type
        = QRegularExpression(QStringLiteral("^multipart/mixed; boundary=\"([^\"]+)\"$"))
              .match(QString::fromLatin1(entity.headers.value("content-type")));
    if (!type.hasMatch())
        return {};
    const QByteArray boundary = "\r\n--" + type.captured(1).toLatin1();
    if (!entity.body.endsWith(boundary + "--\r\n"))
        return {};
    QList<Entity> parts;
    for (int at = entity.body.indexOf(boundary + "\r\n"); at >= 0;) {
        const int start = at + boundary.size() + 2;
        at = entity.body.indexOf(boundary, start);
        parts.append(parse(entity.body.mid(start, at - start)));
        at = entity.body.indexOf(boundary + "\r\n", at);
    }
    return parts;
}

// What zbarimg reads in a PNG image: the texts of its codes, one a line.
QString decodeQrCode(const QByteArray &png)
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("code.png")));
    if (!file.open(QIODevice::WriteOnly) || file.write(png) != png.size())
        return QStringLiteral("(not written)");
    file.close();
    QProcess zbarimg;
    zbarimg.start(QStringLiteral("zbarimg"),
                  {QStringLiteral("--raw"), QStringLiteral("-q"), file.fileName()});
    if (!zbarimg.waitForFinished(30000) || zbarimg.exitCode() != 0)
        return QStringLiteral("(zbarimg failed: %1)")
            .arg(QString::fromLocal8Bit(zbarimg.readAllStandardError()));
    return QString::fromUtf8(zbarimg.readAllStandardOutput()).trimmed();
}

QString crlf(QString text)
{
    return text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
}

_EMAIL_MESSAGE mobileMessage(const QString &locale)
{
    _EMAIL_MESSAGE message;
    message.to = QStringLiteral("i.petrov@sevmeh.example");
    message.parameters.insert(QLatin1String(email::LOCALE), locale);
    message.parameters.insert(QLatin1String(email::IS_MOBILE_TOKEN), true);
    message.parameters.insert(QLatin1String(email::GREETINGS),
                              QStringLiteral("Уважаемый Иван Петрович!"));
    message.parameters.insert(QLatin1String(email::TOKEN), QStringLiteral("eyJob3N0IjoienIifQ=="));
    return message;
}

RenderedMail render(const _EMAIL_MESSAGE &message)
{
    return MailRenderer(QStringLiteral("zeral@sevmeh.example")).render(message);
}

} // namespace

class TestMailRenderer : public QObject
{
    Q_OBJECT

private slots:
    void rendersInLanguageOfLocale_data();
    void rendersInLanguageOfLocale();
    void ownSubjectAndBodyWin();
    void attachmentsGoIntoMultipart();
    void validatesAddresses_data();
    void validatesAddresses();
    void qrCodeCarriesTheToken_data();
    void qrCodeCarriesTheToken();
    void tokenTooLongGoesWithoutQrCode();
};

void TestMailRenderer::qrCodeCarriesTheToken_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("locale");
    // What the users screen puts in: the connection data as base64 of JSON.
    const QByteArray json = R"({"host":"zeral.sevmeh.example","port":8443,"login":"i.petrov",)"
                            R"("password":"Xk4-pL9q!rT2","ident":0})";
    QTest::addRow("typical token") << QString::fromLatin1(json.toBase64()) << "ru";
    QTest::addRow("short token, english mail") << "eyJob3N0IjoienIifQ=="
                                               << "en";
    QTest::addRow("long token") << QString::fromLatin1(QByteArray(1200, 'k').toBase64()) << "ru";
}

void TestMailRenderer::qrCodeCarriesTheToken()
{
    QFETCH(QString, token);
    QFETCH(QString, locale);
    if (QStandardPaths::findExecutable(QStringLiteral("zbarimg")).isEmpty())
        QSKIP("zbarimg is not installed (Debian package zbar-tools): the QR code can't be read "
              "back here");
    _EMAIL_MESSAGE message = mobileMessage(locale);
    message.parameters.insert(QLatin1String(email::TOKEN), token);
    const RenderedMail mail = render(message);
    const QList<Entity> parts = partsOf(parse(mail.message));
    QCOMPARE(parts.size(), 2);
    QCOMPARE(parts.at(1).headers.value("content-disposition"),
             QByteArray("attachment; filename=\"qr-code.png\""));
    const QByteArray png = QByteArray::fromBase64(parts.at(1).body);
    QVERIFY(png.startsWith("\x89PNG\r\n"));
    QCOMPARE(decodeQrCode(png), token);
    QVERIFY(mail.body.contains(QLatin1Char('\n') + token + QLatin1Char('\n')));
    QVERIFY(mail.body.contains(locale == "en" ? QStringLiteral("QR code")
                                              : QStringLiteral("QR-кодом")));
}

void TestMailRenderer::tokenTooLongGoesWithoutQrCode()
{
    _EMAIL_MESSAGE message = mobileMessage(QStringLiteral("ru"));
    const QString token = QString::fromLatin1(QByteArray(3000, 'x').toBase64());
    message.parameters.insert(QLatin1String(email::TOKEN), token);
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral(
                          "mail to .*i.petrov@sevmeh.example.* without the QR code.*4000 bytes")));
    const RenderedMail mail = render(message);
    const Entity entity = parse(mail.message);
    QCOMPARE(entity.headers.value("content-type"), QByteArray("text/plain; charset=utf-8"));
    QVERIFY(decodeText(entity).contains(token));
    QVERIFY(!mail.body.contains(QStringLiteral("QR")));
}

void TestMailRenderer::rendersInLanguageOfLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("phrase");
    QTest::addColumn<QString>("subject");
    const QString ru = QStringLiteral("Не пересылайте это письмо");
    const QString ruSubject = QStringLiteral("Zeral: доступ к мобильному приложению");
    const QString en = QStringLiteral("Do not forward this message");
    const QString enSubject = QStringLiteral("Zeral: access to the mobile app");
    QTest::addRow("russian") << "ru" << ru << ruSubject;
    QTest::addRow("english") << "en" << en << enSubject;
    QTest::addRow("english region") << "en_GB" << en << enSubject;
    QTest::addRow("unknown falls back") << "de" << ru << ruSubject;
    QTest::addRow("none falls back") << "" << ru << ruSubject;
}

void TestMailRenderer::rendersInLanguageOfLocale()
{
    QFETCH(QString, locale);
    QFETCH(QString, phrase);
    QFETCH(QString, subject);

    const RenderedMail mail = render(mobileMessage(locale));
    QCOMPARE(mail.recipient, QStringLiteral("i.petrov@sevmeh.example"));
    QCOMPARE(mail.subject, subject);
    QVERIFY(mail.body.startsWith(QStringLiteral("Уважаемый Иван Петрович!\n")));
    QVERIFY(mail.body.contains(QStringLiteral("\neyJob3N0IjoienIifQ==\n")));
    QVERIFY(mail.body.contains(phrase));

    // Every line ends in CRLF and stays within what SMTP wants.
    for (const QByteArray &line : mail.message.split('\n'))
        QVERIFY2(line.isEmpty() || (line.endsWith('\r') && line.size() <= 79), line.constData());
    QVERIFY(mail.message.endsWith("\r\n"));

    const Entity entity = parse(mail.message);
    QCOMPARE(decodeWords(entity.headers.value("subject")), subject);
    // The text first, then the token's QR code.
    const QList<Entity> parts = partsOf(entity);
    QCOMPARE(parts.size(), 2);
    QCOMPARE(decodeText(parts.at(0)), crlf(mail.body));
    QCOMPARE(parts.at(0).headers.value("content-type"), QByteArray("text/plain; charset=utf-8"));
    QCOMPARE(parts.at(0).headers.value("content-transfer-encoding"), QByteArray("base64"));
    QCOMPARE(parts.at(1).headers.value("content-type"),
             QByteArray("image/png; name=\"qr-code.png\""));
    QCOMPARE(entity.headers.value("from"), QByteArray("zeral@sevmeh.example"));
    QCOMPARE(entity.headers.value("to"), QByteArray("i.petrov@sevmeh.example"));
    QCOMPARE(entity.headers.value("mime-version"), QByteArray("1.0"));
    const QByteArray messageId = entity.headers.value("message-id");
    QVERIFY(QRegularExpression(QStringLiteral("^<[0-9a-f-]{36}@sevmeh\\.example>$"))
                .match(QString::fromLatin1(messageId))
                .hasMatch());
    QVERIFY(parse(render(mobileMessage(locale)).message).headers.value("message-id") != messageId);
    const QDateTime date
        = QDateTime::fromString(QString::fromLatin1(entity.headers.value("date")), Qt::RFC2822Date);
    QVERIFY(qAbs(date.secsTo(QDateTime::currentDateTime())) < 60);
}

void TestMailRenderer::ownSubjectAndBodyWin()
{
    _EMAIL_MESSAGE message = mobileMessage(QStringLiteral("en"));
    // Cyrillic takes two bytes and the emoji four: no encoded word may cut one apart.
    message.subject = QStringLiteral("Доступ к приложению 📱 для сотрудника отдела кадров "
                                     "Северного механического завода 📱📱");
    message.to = QStringLiteral("a@b.example\r\nBcc: victim@evil.example");
    RenderedMail mail = render(message);
    QCOMPARE(mail.subject, message.subject);
    const Entity entity = parse(mail.message);
    QVERIFY(!entity.headers.contains("bcc")); // a line break can't start a field of its own
    const QByteArray subject = entity.headers.value("subject");
    QVERIFY(subject.count("=?UTF-8?B?") > 2);
    for (const QByteArray &word : subject.split(' ')) {
        const QByteArray bytes = QByteArray::fromBase64(word.mid(10, word.size() - 12));
        QCOMPARE(QString::fromUtf8(bytes).toUtf8(), bytes); // valid UTF-8 on its own
    }
    QCOMPARE(decodeWords(subject), message.subject);

    message.body = QStringLiteral("Готовый текст\nв две строки");
    mail = render(message);
    QCOMPARE(mail.body, message.body);
    QCOMPARE(decodeText(parse(mail.message)), crlf(message.body));
}

void TestMailRenderer::attachmentsGoIntoMultipart()
{
    _EMAIL_MESSAGE message = mobileMessage(QStringLiteral("ru"));
    QByteArray binary;
    for (int i = 0; i < 300; ++i)
        binary.append(char(i));
    message.attachments.append({QStringLiteral("token.txt"), QStringLiteral("text/plain"), "eyJ9"});
    message.attachments.append(
        {QStringLiteral("../Инструкция.pdf"), QStringLiteral("bad\r\ntype"), binary});
    message.parameters.remove(QLatin1String(email::IS_MOBILE_TOKEN)); // no QR code
    const RenderedMail mail = render(message);

    const QList<Entity> parts = partsOf(parse(mail.message));
    QCOMPARE(parts.size(), 3);

    QCOMPARE(decodeText(parts[0]), crlf(mail.body));
    QCOMPARE(parts[1].headers.value("content-type"), QByteArray("text/plain; name=\"token.txt\""));
    QCOMPARE(parts[1].headers.value("content-disposition"),
             QByteArray("attachment; filename=\"token.txt\""));
    QCOMPARE(QByteArray::fromBase64(parts[1].body), QByteArray("eyJ9"));
    // A broken type becomes a neutral one; a name outside ASCII goes as an extended parameter.
    QCOMPARE(parts[2].headers.value("content-type"), QByteArray("application/octet-stream"));
    const QByteArray disposition = parts[2].headers.value("content-disposition");
    QVERIFY(disposition.startsWith("attachment;  filename*=UTF-8''"));
    QCOMPARE(QString::fromUtf8(QByteArray::fromPercentEncoding(disposition.mid(30))),
             QStringLiteral("Инструкция.pdf"));
    QCOMPARE(QByteArray::fromBase64(parts[2].body), binary);
}

void TestMailRenderer::validatesAddresses_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("valid");
    QTest::addRow("plain") << "i.petrov@sevmeh.example" << true;
    QTest::addRow("plus and digits") << "ops+2026@mail.zeral-tech.ru" << true;
    QTest::addRow("empty") << "" << false;
    QTest::addRow("two ats") << "a@b@c.ru" << false;
    QTest::addRow("no domain dot") << "admin@localhost" << false;
    QTest::addRow("double dot") << "a..b@b.ru" << false;
    QTest::addRow("hyphen label") << "a@-b.ru" << false;
    QTest::addRow("display name") << "Иван <a@b.ru>" << false;
    QTest::addRow("cyrillic") << "иван@почта.рф" << false;
    QTest::addRow("trailing newline") << "a@b.ru\n" << false;
    QTest::addRow("long local part") << QString(65, QLatin1Char('a')) + "@b.ru" << false;
}

void TestMailRenderer::validatesAddresses()
{
    QFETCH(QString, address);
    QFETCH(bool, valid);
    QCOMPARE(MailRenderer::isValidAddress(address), valid);
}

QTEST_GUILESS_MAIN(TestMailRenderer)
#include "tst_mailrenderer.moc"
