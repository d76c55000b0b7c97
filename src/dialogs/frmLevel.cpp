#include "frmLevel.h"

#include "app/FormGeometry.h"

#include <QApplication>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>

#include <algorithm>
#include <utility>

namespace {

const QString CheckMark = QStringLiteral("\u2713");

// Where a row's parts go: its text from the left; at the right edge a column
// for the fewest steps, before it one for the check mark and the player's
// best. The columns take the room of three digits on every row, so the
// numbers line up and every row leaves its text the same room.
struct RowParts
{
    QRect text, best, fewest;
    QString bestText, fewestText;
};

RowParts LayOutRow(QRect area, const QFontMetrics &metrics, const QModelIndex &index)
{
    RowParts parts;
    const QVariant fewest = index.data(frmLevel::FewestStepsRole);
    const QVariant best = index.data(frmLevel::BestRole);
    if (fewest.isValid())
        parts.fewestText = QString::number(fewest.toInt());
    if (best.isValid())
        parts.bestText = CheckMark + QLatin1Char(' ') + QString::number(best.toInt());
    const int gap = metrics.horizontalAdvance(QStringLiteral("  "));
    const int fewestWidth = std::max(metrics.horizontalAdvance(QStringLiteral("000")),
        metrics.horizontalAdvance(parts.fewestText));
    const int bestWidth = std::max(metrics.horizontalAdvance(CheckMark + QStringLiteral(" 000")),
        metrics.horizontalAdvance(parts.bestText));
    parts.fewest = area;
    parts.fewest.setLeft(area.right() + 1 - fewestWidth);
    parts.best = area;
    parts.best.setRight(parts.fewest.left() - 1 - gap);
    parts.best.setLeft(parts.best.right() + 1 - bestWidth);
    parts.text = area;
    parts.text.setRight(parts.best.left() - 1 - gap);
    return parts;
}

QColor Mix(const QColor &ink, const QColor &ground, qreal inkShare)
{
    const auto mix = [&](qreal a, qreal b) { return a * inkShare + b * (1 - inkShare); };
    return QColor::fromRgbF(float(mix(ink.redF(), ground.redF())),
        float(mix(ink.greenF(), ground.greenF())), float(mix(ink.blueF(), ground.blueF())));
}

// Draws the row's text and its marks side by side in the colours of the
// list's own palette, so they read in light and dark themes alike.
class LevelRowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
        const QModelIndex &index) const override
    {
        QString text;
        const QStyleOptionViewItem item = Untitled(option, index, text);
        const QStyle *style = item.widget ? item.widget->style() : QApplication::style();
        style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);
        const RowParts parts = LayOutRow(TextArea(item), item.fontMetrics, index);
        const QPalette::ColorGroup group = !(item.state & QStyle::State_Enabled)
            ? QPalette::Disabled
            : (item.state & QStyle::State_Active) ? QPalette::Active
                                                  : QPalette::Inactive;
        const bool selected = item.state & QStyle::State_Selected;
        const QColor ink
            = item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
        const QColor ground
            = item.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
        painter->save();
        painter->setFont(item.font);
        painter->setPen(ink);
        const int flags = Qt::AlignVCenter | Qt::TextSingleLine;
        painter->drawText(parts.text, flags | Qt::AlignLeft,
            item.fontMetrics.elidedText(text, Qt::ElideRight, parts.text.width()));
        painter->drawText(parts.best, flags | Qt::AlignRight, parts.bestText);
        // The level's own figure a little quieter than the player's.
        painter->setPen(Mix(ink, ground, 0.7));
        painter->drawText(parts.fewest, flags | Qt::AlignRight, parts.fewestText);
        painter->restore();
    }

    bool Fits(const QStyleOptionViewItem &option, const QModelIndex &index) const
    {
        QString text;
        const QStyleOptionViewItem item = Untitled(option, index, text);
        const RowParts parts = LayOutRow(TextArea(item), item.fontMetrics, index);
        return item.fontMetrics.horizontalAdvance(text) <= parts.text.width();
    }

private:
    // The row as the style sees it, its text taken out: the style draws
    // the background, the selection and the focus, and leaves the text to us.
    QStyleOptionViewItem Untitled(
        const QStyleOptionViewItem &option, const QModelIndex &index, QString &text) const
    {
        QStyleOptionViewItem item = option;
        initStyleOption(&item, index);
        text = std::exchange(item.text, QString());
        return item;
    }

    // The row inside the margins the style keeps around an item's text;
    // the rows have neither icons nor check boxes.
    static QRect TextArea(const QStyleOptionViewItem &item)
    {
        const QStyle *style = item.widget ? item.widget->style() : QApplication::style();
        const int margin
            = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, item.widget) + 1;
        return item.rect.adjusted(margin, 0, -margin, 0);
    }
};

} // namespace

frmLevel::frmLevel(frmMain &main)
    : FixedDialog(main, QStringLiteral("Choose Level"), 4155, 3510)
{
    lisLevel = new QListWidget(this);
    lisLevel->setGeometry(PxRect(30, 0, 4095, 2700));
    lisLevel->setSelectionMode(QAbstractItemView::SingleSelection);
    lisLevel->setSortingEnabled(false);
    lisLevel->setUniformItemSizes(true);
    QFont font = lisLevel->font();
    font.setPointSizeF(9.75);
    lisLevel->setFont(font);
    lisLevel->setItemDelegate(new LevelRowDelegate(lisLevel));
    cmdSetLevel = new QPushButton(QStringLiteral("&Set Level"), this);
    cmdSetLevel->setGeometry(PxRect(210, 2880, 1695, 495));
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setGeometry(PxRect(2280, 2880, 1695, 495));
    // Neither button is the default: a level is chosen with Set Level only,
    // never by Return.
    for (QPushButton *button : {cmdSetLevel, cmdCancel})
        button->setAutoDefault(false);
    setTabOrder(lisLevel, cmdSetLevel);
    setTabOrder(cmdSetLevel, cmdCancel);
    lisLevel->setFocus();
    connect(cmdSetLevel, &QPushButton::clicked, this, &frmLevel::cmdSetLevel_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmLevel::cmdCancel_Click);
}

void frmLevel::cmdSetLevel_Click()
{
    const int selected = lisLevel->selectedItems().isEmpty() ? -1 : lisLevel->currentRow();
    if (selected == -1)
        return;
    newLevel = int16_t(selected);
    accept();
}

void frmLevel::cmdCancel_Click()
{
    newLevel = -1;
    QDialog::reject();
}

void frmLevel::reject()
{
    cmdCancel_Click();
}

void frmLevel::ShowProgress(
    const std::array<int, LevelCount> &fewest, const PlayerProgress &progress)
{
    for (int i = 0; i < std::min(lisLevel->count(), int(LevelCount)); ++i) {
        const size_t at = size_t(i);
        QListWidgetItem *item = lisLevel->item(i);
        QString tip;
        if (fewest[at] >= 0) {
            item->setData(FewestStepsRole, fewest[at]);
            tip = QStringLiteral("Fewest possible steps: %1").arg(fewest[at]);
        }
        if (progress.Won(i)) {
            item->setData(BestRole, progress.best[at]);
            tip += QStringLiteral("\nSolved; your best: %1 steps").arg(progress.best[at]);
        }
        item->setToolTip(tip.trimmed());
        item->setData(Qt::AccessibleDescriptionRole, tip.trimmed());
    }
}

bool frmLevel::RowFits(int row) const
{
    QStyleOptionViewItem option;
    option.initFrom(lisLevel->viewport());
    option.widget = lisLevel;
    option.font = lisLevel->font();
    option.fontMetrics = QFontMetrics(option.font);
    const QModelIndex index = lisLevel->model()->index(row, 0);
    option.rect = lisLevel->visualRect(index);
    return static_cast<const LevelRowDelegate *>(lisLevel->itemDelegate())->Fits(option, index);
}
