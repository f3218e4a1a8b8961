#include "smtpclient.h"

#include <server/engine/mail/mailrenderer.h>

#include <QUrl>

#include <curl/curl.h>

#include <memory>

namespace zeral::server {

namespace {

struct Upload
{
    const QByteArray *message;
    qsizetype offset = 0;
};

size_t readMessage(char *buffer, size_t size, size_t count, void *userData)
{
    auto *upload = static_cast<Upload *>(userData);
    const qsizetype left = upload->message->size() - upload->offset;
    const qsizetype length = qMin(left, qsizetype(size * count));
    memcpy(buffer, upload->message->constData() + upload->offset, size_t(length));
    upload->offset += length;
    return size_t(length);
}

int checkAbort(void *userData, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    const auto *abort = static_cast<const std::atomic<bool> *>(userData);
    return abort && abort->load() ? 1 : 0;
}

struct EasyDeleter
{
    void operator()(CURL *curl) const { curl_easy_cleanup(curl); }
};
struct ListDeleter
{
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};

} // namespace

SmtpClient::SmtpClient(QString relayUrl)
    : m_relayUrl(std::move(relayUrl))
{}

bool SmtpClient::initialiseLibrary()
{
    // Thread-safe since C++11, and libcurl's own global setup must run only once.
    static const bool initialised = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return initialised;
}

QString SmtpClient::displayUrl(const QString &relayUrl)
{
    return QUrl(relayUrl).toDisplayString(QUrl::RemoveUserInfo);
}

QString SmtpClient::envelopeSender(const QByteArray &message)
{
    const int headerEnd = message.indexOf("\r\n\r\n");
    const QList<QByteArray> lines
        = message.left(headerEnd < 0 ? message.size() : headerEnd).split('\n');
    for (const QByteArray &line : lines) {
        if (!line.startsWith("From:"))
            continue;
        QByteArray value = line.mid(5).trimmed();
        const int open = value.indexOf('<');
        const int close = value.indexOf('>', open);
        if (open >= 0 && close > open)
            value = value.mid(open + 1, close - open - 1);
        return QString::fromLatin1(value.trimmed());
    }
    return QString();
}

bool SmtpClient::send(const QString &recipient, const QByteArray &message,
                      ServerText *error) const
{
    if (!MailRenderer::isValidAddress(recipient)) {
        *error = ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                              "Адрес получателя «%1» неверен: письмо не может "
                                              "быть доставлено. Исправьте адрес и отправьте "
                                              "письмо снова."))
                     .arg(recipient);
        return false;
    }
    const std::unique_ptr<CURL, EasyDeleter> curl(curl_easy_init());
    if (!curl) {
        *error = ServerText(QT_TRANSLATE_NOOP(
            "ZRServer", "Не удалось подготовить отправку почты (libcurl). Перезапустите сервер."));
        return false;
    }
    const QByteArray url = m_relayUrl.toUtf8();
    const QByteArray from = "<" + envelopeSender(message).toUtf8() + ">";
    const QByteArray to = "<" + recipient.toUtf8() + ">";
    const std::unique_ptr<curl_slist, ListDeleter> recipients(
        curl_slist_append(nullptr, to.constData()));
    Upload upload{&message};
    char curlError[CURL_ERROR_SIZE] = {};

    CURL *handle = curl.get();
    curl_easy_setopt(handle, CURLOPT_URL, url.constData());
    curl_easy_setopt(handle, CURLOPT_MAIL_FROM, from.constData());
    curl_easy_setopt(handle, CURLOPT_MAIL_RCPT, recipients.get());
    curl_easy_setopt(handle, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, readMessage);
    curl_easy_setopt(handle, CURLOPT_READDATA, &upload);
    curl_easy_setopt(handle, CURLOPT_INFILESIZE_LARGE, curl_off_t(message.size()));
    // Encrypted when the relay offers STARTTLS; smtps:// insists on it anyway.
    curl_easy_setopt(handle, CURLOPT_USE_SSL, long(CURLUSESSL_TRY));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, long(m_timeoutMs));
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, long(qMin(m_timeoutMs, 15000)));
    // No signals from another thread; the pause is ours to break off.
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, checkAbort);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, m_abort);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, curlError);

    const CURLcode result = curl_easy_perform(handle);
    if (result == CURLE_OK)
        return true;
    long smtpCode = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &smtpCode);
    const QString detail = QString::fromUtf8(*curlError ? curlError : curl_easy_strerror(result));
    *error = smtpCode > 0
                 ? ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                                "Почтовый сервер %1 отклонил письмо (код %2: %3). "
                                                "Проверьте адрес получателя и настройки почтового "
                                                "сервера."))
                       .arg(displayUrl(m_relayUrl))
                       .arg(QString::number(smtpCode))
                       .arg(detail)
                 : ServerText(QT_TRANSLATE_NOOP("ZRServer",
                                                "Не удалось передать письмо почтовому серверу %1: "
                                                "%2. Проверьте, что он доступен и что его адрес в "
                                                "настройках верен."))
                       .arg(displayUrl(m_relayUrl), detail);
    return false;
}

} // namespace zeral::server
