#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

/**
 * The texts of a shown widget and those below it that do not fit where they stand: labels, buttons,
 * headings, cells, titles of panes, and what stands in charts. Empty when all can be read.
 */
[[nodiscard]] QStringList textsCutOff(const QWidget& root);

/** Every text that stands in the charts below a widget. */
[[nodiscard]] QStringList chartTexts(const QWidget& root);
