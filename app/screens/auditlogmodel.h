#pragma once

#include <shared/auditfilter.h>
#include <shared/auditrecord.h>

#include <QAbstractTableModel>
#include <QList>
#include <QPointer>

#include <functional>

struct Command;
class ZRServerInterface;

// The server's audit log for the log screen, newest first, read page by page as the view
// scrolls (canFetchMore/fetchMore, `admin.audit_log`) through one filter. Rows the server
// pushes (`audit.appended`) come in at the top when they pass the filter.
class AuditLogModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column {
        TimeColumn,
        OperatorColumn,
        PeerColumn,
        ActionColumn,
        ObjectColumn,
        ResultColumn,
        ConfirmedByColumn,
        DetailColumn,
        ColumnCount
    };
    // Rows asked for per page: a screenful or two, well below the server's bound.
    static constexpr qint32 PageSize = 200;

    explicit AuditLogModel(ZRServerInterface *server, QObject *parent = nullptr);
    ~AuditLogModel() override;

    // Starts again from the newest row with another filter.
    void setFilter(const zeral::AuditFilter &filter);
    zeral::AuditFilter filter() const { return m_filter; }
    void reload() { setFilter(m_filter); }
    // Reads every page still missing, then calls `done` with whether all came.
    void fetchAll(std::function<void(bool complete)> done);
    bool isLoading() const { return m_loading; }
    bool hasMore() const { return m_more; }
    const zeral::AuditRecord &record(int row) const { return m_rows.at(row); }

    // The Russian name of a command in the log, or the command itself if it has none.
    static QString actionTitle(const QString &command);
    // The commands the log names, in the order a list of them shows.
    static QStringList knownActions();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

signals:
    // A page was refused or could not be read; the server's sentence.
    void failed(const QString &text);
    // A page has arrived (the first one too), or a pushed row came in.
    void rowsArrived();

private:
    void onPage(quint64 generation, Command &answer);
    void onPush(const Command &push);
    void finishFetchAll(bool complete);

    QPointer<ZRServerInterface> m_server;
    zeral::AuditFilter m_filter;
    QList<zeral::AuditRecord> m_rows;
    bool m_more = false; // nothing to fetch before a filter is set
    bool m_loading = false;
    // Pages of an earlier filter that are still on their way are dropped by this.
    quint64 m_generation = 0;
    std::function<void(bool)> m_fetchAllDone;
};
