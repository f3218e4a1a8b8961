#pragma once

#include <host/core/zrplugininterface.h>
#include <host/gui/widgets/pluginwidget.h>
#include <shared/auditfilter.h>

class AuditLogModel;
class QAction;
class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

// The studio's audit log screen, "Журнал действий": what operators changed and what anybody
// was refused, newest first, read from the server page by page while the operator scrolls,
// through a filter by operator, object, action, result and time; new rows arrive by push.
// The rows of the filter can be saved as CSV. Only for operators with "RL_AUDIT_SHOW".
class AuditLogScreen : public PluginWidget, public ZRPluginInterface
{
    Q_OBJECT
    Q_INTERFACES(ZRPluginInterface)
public:
    explicit AuditLogScreen(QWidget *parent = nullptr);
    ~AuditLogScreen() override;

    QString pluginName() const override;
    int pluginVersion() const override;
    QString pluginBuild() const override;
    QWidget *widget() override { return this; }
    QObject *object() override { return this; }
    QList<CommandType> init(ZRServerInterface *server, const QString &name) override;

    bool canShow() override;
    QList<PLUGIN_TAB> tabList() override;
    void onTabActivated(int index) override;
    // Reads the log the first time the screen is shown.
    void activated() override;

    // The filter as the bar shows it.
    zeral::AuditFilter filterFromBar() const;

    AuditLogModel *model() const { return m_model; }
    QTableView *view() const { return m_view; }
    QLineEdit *operatorEdit() const { return m_operator; }
    QLineEdit *objectEdit() const { return m_object; }
    QComboBox *actionBox() const { return m_action; }
    QComboBox *resultBox() const { return m_result; }
    QCheckBox *fromCheck() const { return m_fromCheck; }
    QDateTimeEdit *fromEdit() const { return m_from; }
    QCheckBox *toCheck() const { return m_toCheck; }
    QDateTimeEdit *toEdit() const { return m_to; }
    QAction *exportAction() const { return m_export; }
    QLabel *statusLabel() const { return m_status; }

public slots:
    // Reads the log anew through the filter of the bar.
    void applyFilter();
    // Asks for a file and saves the rows of the filter there.
    void exportCsv();

public:
    // Reads every row of the filter that isn't here yet, then writes them all to `path`;
    // `exported` or `exportFailed` tells the outcome.
    void exportTo(const QString &path);

signals:
    void exported(const QString &path, int rows);
    void exportFailed(const QString &text);

private:
    void updateStatus();
    void showFailure(const QString &text);

    AuditLogModel *m_model = nullptr;
    QTableView *m_view;
    QLineEdit *m_operator;
    QLineEdit *m_object;
    QComboBox *m_action;
    QComboBox *m_result;
    QCheckBox *m_fromCheck;
    QDateTimeEdit *m_from;
    QCheckBox *m_toCheck;
    QDateTimeEdit *m_to;
    QPushButton *m_apply;
    QAction *m_export;
    QLabel *m_status;
    bool m_loaded = false;
};
