#include "tests/tools/viewer/texts.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QChartView>
#include <QComboBox>
#include <QDockWidget>
#include <QGraphicsSimpleTextItem>
#include <QGraphicsTextItem>
#include <QHeaderView>
#include <QLabel>
#include <QTabBar>
#include <QTableView>
#include <QTextDocument>
#include <QTreeView>

#include <optional>

namespace {

// Tolerates the rounding of scaled fonts.
constexpr double kTolerance = 1.0;

void checkLabel(const QLabel& label, QStringList& cutOff) {
    if (label.text().isEmpty()) {
        return;
    }
    const bool fits = label.wordWrap()
                          ? label.heightForWidth(label.width()) <= label.height() + kTolerance
                          : label.sizeHint().width() <= label.width() + kTolerance &&
                                label.sizeHint().height() <= label.height() + kTolerance;
    if (!fits) {
        cutOff.append(QStringLiteral("label: ") + label.text());
    }
}

void checkHeader(const QHeaderView& header, QStringList& cutOff) {
    for (int section = 0; section < header.count(); ++section) {
        const int needed = header.sectionSizeHint(section);
        if (needed > header.sectionSize(section) + kTolerance) {
            cutOff.append(QStringLiteral("heading: ") +
                          header.model()->headerData(section, header.orientation()).toString());
        }
    }
}

void checkCells(const QAbstractItemView& view, const QModelIndex& parent, QStringList& cutOff) {
    const QAbstractItemModel& model = *view.model();
    for (int row = 0; row < model.rowCount(parent); ++row) {
        for (int column = 0; column < model.columnCount(parent); ++column) {
            const QModelIndex index = model.index(row, column, parent);
            const QSize needed = view.sizeHintForIndex(index);
            const QRect place = view.visualRect(index);
            if (place.isValid() && (needed.width() > place.width() + kTolerance ||
                                    needed.height() > place.height() + kTolerance)) {
                cutOff.append(QStringLiteral("cell: ") + index.data().toString());
            }
        }
        checkCells(view, model.index(row, 0, parent), cutOff);
    }
}

/** A text item in a chart, plain or rich. */
struct ChartText {
    QString text;
    QRectF ink;  // in the scene
};

std::optional<ChartText> textIn(const QGraphicsItem& item) {
    if (const auto* rich = qgraphicsitem_cast<const QGraphicsTextItem*>(&item)) {
        // The document's margin around the text may exceed the chart.
        const double margin = rich->document()->documentMargin();
        return ChartText{rich->toPlainText(), rich->mapRectToScene(rich->boundingRect().adjusted(
                                                  margin, margin, -margin, -margin))};
    }
    if (const auto* plain = qgraphicsitem_cast<const QGraphicsSimpleTextItem*>(&item)) {
        return ChartText{plain->text(), plain->sceneBoundingRect()};
    }
    return std::nullopt;
}

QList<ChartText> textsIn(const QChartView& chart) {
    QList<ChartText> texts;
    const QList<QGraphicsItem*> items = chart.items();
    for (const QGraphicsItem* item : items) {
        const std::optional<ChartText> text = textIn(*item);
        if (text && item->isVisible() && !text->text.isEmpty()) {
            texts.append(*text);
        }
    }
    return texts;
}

void checkChart(const QChartView& chart, QStringList& cutOff) {
    const QRectF seen = chart.mapToScene(chart.viewport()->rect()).boundingRect();
    const QList<ChartText> texts = textsIn(chart);
    for (const ChartText& text : texts) {
        const bool isShortened =
            text.text.contains(QStringLiteral("...")) || text.text.contains(QChar(0x2026));
        if (isShortened || !seen.adjusted(-1, -1, 1, 1).contains(text.ink)) {
            cutOff.append(QStringLiteral("chart: ") + text.text);
        }
        for (const ChartText& other : texts) {
            if (&other != &text && other.ink.adjusted(1, 1, -1, -1).intersects(text.ink)) {
                cutOff.append(QStringLiteral("chart: %1 over %2").arg(text.text, other.text));
            }
        }
    }
}

void check(const QWidget& widget, QStringList& cutOff) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        checkLabel(*label, cutOff);
    } else if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        if (!button->text().isEmpty() &&
            button->sizeHint().width() > button->width() + kTolerance) {
            cutOff.append(QStringLiteral("button: ") + button->text());
        }
    } else if (const auto* box = qobject_cast<const QComboBox*>(&widget)) {
        if (box->sizeHint().width() > box->width() + kTolerance) {
            cutOff.append(QStringLiteral("choice: ") + box->currentText());
        }
    } else if (const auto* header = qobject_cast<const QHeaderView*>(&widget)) {
        checkHeader(*header, cutOff);
    } else if (const auto* tree = qobject_cast<const QTreeView*>(&widget)) {
        checkCells(*tree, {}, cutOff);
    } else if (const auto* table = qobject_cast<const QTableView*>(&widget)) {
        checkCells(*table, {}, cutOff);
    } else if (const auto* chart = qobject_cast<const QChartView*>(&widget)) {
        checkChart(*chart, cutOff);
    } else if (const auto* pane = qobject_cast<const QDockWidget*>(&widget)) {
        if (pane->fontMetrics().horizontalAdvance(pane->windowTitle()) > pane->width()) {
            cutOff.append(QStringLiteral("pane: ") + pane->windowTitle());
        }
    } else if (const auto* tabs = qobject_cast<const QTabBar*>(&widget)) {
        for (int tab = 0; tab < tabs->count(); ++tab) {
            if (tabs->fontMetrics().horizontalAdvance(tabs->tabText(tab)) >
                tabs->tabRect(tab).width()) {
                cutOff.append(QStringLiteral("tab: ") + tabs->tabText(tab));
            }
        }
    }
}

}  // namespace

QStringList textsCutOff(const QWidget& root) {
    QStringList cutOff;
    check(root, cutOff);
    const QList<QWidget*> widgets = root.findChildren<QWidget*>();
    for (const QWidget* widget : widgets) {
        if (widget->isVisible() && widget->window() == &root) {
            check(*widget, cutOff);
        }
    }
    return cutOff;
}

QStringList chartTexts(const QWidget& root) {
    QStringList texts;
    const QList<QChartView*> charts = root.findChildren<QChartView*>();
    for (const QChartView* chart : charts) {
        for (const ChartText& text : textsIn(*chart)) {
            texts.append(text.text);
        }
    }
    return texts;
}
