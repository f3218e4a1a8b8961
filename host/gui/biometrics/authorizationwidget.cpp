#include "authorizationwidget.h"

#include "biometricslogging.h"
#include "fingerprintowner.h"
#include "fingerprintreaderfactory.h"
#include "simulatedfingerprintpanel.h"
#include "simulatedfingerprintreader.h"

#include <host/gui/wizards/wizardmarks.h>

#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QVBoxLayout>

#include <functional>

namespace {

const QColor problemText(0xb7, 0x1c, 0x1c);

// A short list shows all its rows without a scroll bar, up to a few; a long name wraps, so the
// rows are measured as laid out.
void fitHeight(QListWidget *list, int minRows, int maxRows)
{
    list->doItemsLayout();
    const int shown = qMin(list->count(), maxRows);
    int height = 0;
    for (int row = 0; row < shown; ++row)
        height += list->visualItemRect(list->item(row)).height() + 2 * list->spacing();
    height += qMax(0, minRows - shown) * (list->fontMetrics().height() + 8);
    list->setFixedHeight(height + 2 * list->frameWidth() + 2);
}

void setUpList(QListWidget *list)
{
    list->setSelectionMode(QAbstractItemView::NoSelection);
    list->setFocusPolicy(Qt::NoFocus);
    list->setWordWrap(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setIconSize(QSize(16, 16));
}

// A fingerprint drawn as nested arcs, in the accent colour of the palette.
QPixmap fingerprintPicture(const QPalette &palette)
{
    const int size = 44;
    QPixmap pixmap(size * 2, size * 2);
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(palette.color(QPalette::Highlight), 2.0, Qt::SolidLine, Qt::RoundCap));
    const QPointF centre(size / 2.0, size / 2.0 + 3);
    for (int ring = 0; ring < 5; ++ring) {
        const qreal radius = 3.5 + ring * 3.8;
        const QRectF box(centre.x() - radius, centre.y() - radius * 1.25, radius * 2, radius * 2.5);
        // Each ridge is open at the bottom, a little differently each time.
        const int start = -50 + ring * 9;
        painter.drawArc(box, start * 16, (280 - ring * 14) * 16);
    }
    return pixmap;
}

} // namespace

AuthorizationWidget::AuthorizationWidget(QWidget *parent)
    : QWidget(parent)
    , m_noticeLabel(new QLabel(this))
    , m_iconLabel(new QLabel(this))
    , m_statusLabel(new QLabel(this))
    , m_variantList(new QListWidget(this))
    , m_identifiedList(new QListWidget(this))
    , m_simulatedPanel(new SimulatedFingerprintPanel(this))
{
    m_iconLabel->setPixmap(fingerprintPicture(palette()));
    m_iconLabel->setAlignment(Qt::AlignTop);
    m_statusLabel->setObjectName(QStringLiteral("statusLabel"));
    m_statusLabel->setWordWrap(true);
    QFont statusFont = m_statusLabel->font();
    statusFont.setPointSizeF(statusFont.pointSizeF() * 1.15);
    m_statusLabel->setFont(statusFont);

    m_variantList->setObjectName(QStringLiteral("variantList"));
    setUpList(m_variantList);
    fitHeight(m_variantList, 1, 3);
    m_identifiedList->setObjectName(QStringLiteral("identifiedList"));
    setUpList(m_identifiedList);
    fitHeight(m_identifiedList, 2, 4);

    m_noticeLabel->setObjectName(QStringLiteral("readerNotice"));
    m_noticeLabel->setWordWrap(true);
    m_noticeLabel->setStyleSheet(
        QStringLiteral("QLabel { background: #fff4ce; color: #5c4400; border: 1px solid #e6c65c;"
                       " border-radius: 3px; padding: 6px 8px; }"));
    m_noticeLabel->hide();

    auto *header = new QHBoxLayout;
    header->addWidget(m_iconLabel);
    header->addWidget(m_statusLabel, 1);
    auto *identifiedTitle = new QLabel(tr("Опознаны:"), this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_noticeLabel);
    layout->addLayout(header);
    layout->addWidget(new QLabel(tr("Кто может подтвердить:"), this));
    layout->addWidget(m_variantList);
    layout->addWidget(identifiedTitle);
    layout->addWidget(m_identifiedList);
    layout->addWidget(m_simulatedPanel, 1);

    QString notice;
    setReader(FingerprintReaderFactory::create(this, &notice));
    showNotice(notice);
    showStatus(tr("Ожидание данных для проверки…"));
    setEnabled(false);
}

AuthorizationWidget::~AuthorizationWidget()
{
    if (m_reader)
        m_reader->stop();
}

void AuthorizationWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitHeight(m_variantList, 1, 3);
    fitHeight(m_identifiedList, 2, 4);
}

void AuthorizationWidget::setReader(FingerprintReader *reader)
{
    if (!reader || reader == m_reader)
        return;
    const bool wasActive = m_reader && m_reader->isActive();
    if (m_reader) {
        m_reader->stop();
        delete m_reader;
    }
    m_reader = reader;
    m_reader->setParent(this);
    connect(m_reader, &FingerprintReader::identified, this,
            &AuthorizationWidget::fingerIdentified);
    connect(m_reader, &FingerprintReader::errorOccurred, this,
            &AuthorizationWidget::readerFailed);
    connect(m_reader, &FingerprintReader::progress, this,
            [this](const QString &text) { showStatus(text, true); });

    auto *simulated = qobject_cast<SimulatedFingerprintReader *>(m_reader);
    m_simulatedPanel->setReader(simulated);
    m_simulatedPanel->setVisible(simulated != nullptr);
    if (wasActive)
        startReader();
}

QString AuthorizationWidget::readerNotice() const
{
    return m_noticeLabel->isHidden() ? QString() : m_noticeLabel->text();
}

QString AuthorizationWidget::statusText() const
{
    return m_statusLabel->text();
}

void AuthorizationWidget::showNotice(const QString &text)
{
    m_noticeLabel->setText(text);
    m_noticeLabel->setVisible(!text.isEmpty());
}

void AuthorizationWidget::startReader()
{
    if (!m_granted)
        m_reader->startIdentification(m_templates);
}

void AuthorizationWidget::readerFailed(FingerprintReader::Failure failure, const QString &message)
{
    if (m_reader->isSimulated() || !FingerprintReaderFactory::fallsBack(failure)) {
        showStatus(message, true);
        return;
    }
    // A missing, busy or unplugged reader: the simulated one stands in, and the operator is
    // told so on top of the widget. The failed reader goes after this call has returned.
    qCWarning(lcBiometrics) << "falling back to the simulated reader:" << message;
    showNotice(FingerprintReaderFactory::fallbackNotice(message));
    FingerprintReader *failed = m_reader;
    failed->stop();
    m_reader = nullptr;
    failed->disconnect(this);
    failed->deleteLater();
    setReader(new SimulatedFingerprintReader(this));
    if (m_started && !m_granted) {
        startReader();
        showStatus(tr("Приложите палец к сканеру."));
    }
}

void AuthorizationWidget::setTemplates(QMultiHash<zeral::TYPE_ID, zeral::TEMPLATE_DATA> templates)
{
    m_templates = templates;
    m_simulatedPanel->setTemplates(templates);
    // A reader already identifying goes on against the new gallery.
    if (m_started && m_reader->isActive())
        startReader();
}

void AuthorizationWidget::addGrantVariant(QString name, int variant, int count)
{
    GrantVariant &entry = m_variants[variant];
    entry.name = name;
    // A variant that asked for nobody would grant anything; it needs one person at least.
    entry.count = qMax(1, count);
    evaluate(false);
}

void AuthorizationWidget::setGrantedUids(int variant, int index, QList<zeral::TYPE_ID> uids)
{
    m_variants[variant].places.insert(index, QSet<zeral::TYPE_ID>(uids.cbegin(), uids.cend()));
    evaluate(false);
}

void AuthorizationWidget::start()
{
    setEnabled(true);
    m_started = true;
    m_identified.clear();
    m_identifiedList->clear();
    fitHeight(m_identifiedList, 2, 4);
    if (m_variants.isEmpty() || allowedAnywhere().isEmpty() || m_templates.isEmpty()) {
        showStatus(tr("Подтвердить изменение некому: нет сохраненных отпечатков пальцев "
                      "пользователей с правом подтверждения."),
                   true);
    } else {
        showStatus(tr("Приложите палец к сканеру."));
    }
    // A reader that can't start says why (readerFailed), over the line above.
    startReader();
    evaluate(true);
}

void AuthorizationWidget::fingerIdentified(zeral::TYPE_ID uid)
{
    if (m_granted)
        return;
    if (uid == 0) {
        showStatus(tr("Отпечаток не распознан. Приложите палец еще раз."), true);
        evaluate(true);
        return;
    }
    const QString name = FingerprintOwner::displayName(uid);
    if (m_identified.contains(uid)) {
        showStatus(tr("%1 уже опознан. Нужен отпечаток другого человека.").arg(name), true);
        evaluate(true);
        return;
    }
    m_identified.append(uid);
    const bool mayGrant = allowedAnywhere().contains(uid);
    qCDebug(lcBiometrics) << "identified" << uid << "may grant" << mayGrant;
    auto *line = new QListWidgetItem(
        WizardMarks::icon(mayGrant ? WizardMarks::Passed : WizardMarks::Failed, palette()),
        mayGrant ? name : tr("%1 — нет права подтверждения").arg(name), m_identifiedList);
    if (!mayGrant)
        line->setForeground(problemText);
    fitHeight(m_identifiedList, 2, 4);

    evaluate(true);
    if (m_granted)
        showStatus(tr("Изменение подтверждено."));
    else if (mayGrant)
        showStatus(tr("%1 опознан. Нужно подтверждение еще одного человека.").arg(name));
    else
        showStatus(tr("%1 не имеет права подтверждать это изменение.").arg(name), true);
}

QSet<zeral::TYPE_ID> AuthorizationWidget::allowedIn(const GrantVariant &variant, int place) const
{
    const auto own = variant.places.constFind(place);
    if (own != variant.places.constEnd())
        return *own;
    QSet<zeral::TYPE_ID> anyPlace;
    for (const QSet<zeral::TYPE_ID> &uids : variant.places)
        anyPlace.unite(uids);
    return anyPlace;
}

QSet<zeral::TYPE_ID> AuthorizationWidget::allowedAnywhere() const
{
    QSet<zeral::TYPE_ID> everybody;
    for (const GrantVariant &variant : m_variants) {
        for (const QSet<zeral::TYPE_ID> &uids : variant.places)
            everybody.unite(uids);
    }
    return everybody;
}

int AuthorizationWidget::filledPlaces(const GrantVariant &variant) const
{
    // Places and people form a bipartite graph; the greatest matching by augmenting paths
    // tells how many places distinct people can fill at once.
    QList<QSet<zeral::TYPE_ID>> allowed;
    for (int place = 0; place < variant.count; ++place)
        allowed.append(allowedIn(variant, place));
    QHash<zeral::TYPE_ID, int> placeOfPerson;
    std::function<bool(int, QSet<zeral::TYPE_ID> &)> assign
        = [&](int place, QSet<zeral::TYPE_ID> &tried) {
              for (zeral::TYPE_ID uid : qAsConst(m_identified)) {
                  if (!allowed.at(place).contains(uid) || tried.contains(uid))
                      continue;
                  tried.insert(uid);
                  const auto taken = placeOfPerson.constFind(uid);
                  if (taken == placeOfPerson.constEnd() || assign(*taken, tried)) {
                      placeOfPerson.insert(uid, place);
                      return true;
                  }
              }
              return false;
          };
    int filled = 0;
    for (int place = 0; place < variant.count; ++place) {
        QSet<zeral::TYPE_ID> tried;
        if (assign(place, tried))
            ++filled;
    }
    return filled;
}

void AuthorizationWidget::evaluate(bool announce)
{
    bool grantedNow = false;
    for (const GrantVariant &variant : qAsConst(m_variants))
        grantedNow |= filledPlaces(variant) >= variant.count;
    const bool changed = grantedNow != m_granted;
    m_granted = grantedNow;
    updateVariantList();
    if (m_granted && m_reader && m_reader->isActive())
        m_reader->stop();
    if (announce || changed)
        emit granted(m_granted);
}

void AuthorizationWidget::showStatus(const QString &text, bool problem)
{
    m_statusLabel->setText(text);
    QPalette labelPalette = palette();
    if (problem)
        labelPalette.setColor(QPalette::WindowText, problemText);
    m_statusLabel->setPalette(labelPalette);
}

void AuthorizationWidget::updateVariantList()
{
    m_variantList->clear();
    for (const GrantVariant &variant : qAsConst(m_variants)) {
        const int filled = filledPlaces(variant);
        const bool done = filled >= variant.count;
        auto *item = new QListWidgetItem(
            WizardMarks::icon(done ? WizardMarks::Passed : WizardMarks::Coming, palette()),
            tr("%1 — подтверждений %2 из %3").arg(variant.name).arg(filled).arg(variant.count),
            m_variantList);
        QStringList names;
        for (const QSet<zeral::TYPE_ID> &uids : variant.places) {
            for (zeral::TYPE_ID uid : uids)
                names.append(FingerprintOwner::displayName(uid));
        }
        names.removeDuplicates();
        names.sort();
        item->setToolTip(names.join(QLatin1Char('\n')));
    }
    fitHeight(m_variantList, 1, 3);
}
