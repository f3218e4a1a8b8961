#include "qtsqlstatement.h"

#include <server/engine/serverlogging.h>

#include <QRegularExpression>
#include <QSqlError>
#include <QSqlRecord>
#include <QVariant>

namespace zeral::server {

QtSqlStatement::QtSqlStatement(const QSqlDatabase &db, const char *sql)
    : m_query(db)
{
    QString text = QString::fromUtf8(sql);
    text.replace(QRegularExpression(QStringLiteral("\\?(\\d+)")), QStringLiteral("$\\1"));
    m_query.setForwardOnly(true);
    m_prepared = m_query.prepare(text);
    if (!m_prepared) {
        m_lastError = m_query.lastError().text();
        qCWarning(lcServerDb) << "can't prepare" << sql << m_lastError;
    }
}

bool QtSqlStatement::start()
{
    m_query.finish();
    m_binds.clear();
    m_lastError.clear();
    return m_prepared;
}

bool QtSqlStatement::bindValue(int index, const QVariant &value)
{
    if (index < 1)
        return false;
    if (m_binds.size() < index)
        m_binds.resize(index);
    m_binds[index - 1] = value;
    return true;
}

bool QtSqlStatement::bind(int index, qint64 value)
{
    return bindValue(index, QVariant(value));
}

bool QtSqlStatement::bind(int index, const QString &value)
{
    return bindValue(index, QVariant(value.isNull() ? QStringLiteral("") : value));
}

bool QtSqlStatement::next()
{
    if (!m_query.isActive()) {
        // The first call runs the statement with the values bound since start().
        for (int i = 0; i < m_binds.size(); ++i)
            m_query.bindValue(i, m_binds.at(i));
        if (!m_query.exec()) {
            m_lastError = m_query.lastError().text();
            return false;
        }
    }
    if (!m_query.next())
        return false;
    m_texts.fill(QByteArray(), m_query.record().count());
    return true;
}

void QtSqlStatement::finish()
{
    m_query.finish();
}

qint64 QtSqlStatement::integer(int column) const
{
    return m_query.value(column).toLongLong();
}

const char *QtSqlStatement::text(int column, int *size) const
{
    const QVariant value = m_query.value(column);
    if (value.isNull()) {
        *size = 0;
        return nullptr;
    }
    if (m_texts.size() <= column)
        m_texts.resize(column + 1);
    m_texts[column] = value.toString().toUtf8();
    *size = m_texts[column].size();
    return m_texts[column].constData();
}

QString QtSqlStatement::string(int column) const
{
    const QVariant value = m_query.value(column);
    return value.isNull() ? QString() : value.toString();
}

} // namespace zeral::server
