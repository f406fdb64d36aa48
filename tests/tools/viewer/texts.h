#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

/**
 * The texts in a shown widget and its children that do not fit: labels, buttons, headings, cells,
 * titles of panes and texts in charts. Empty when all can be read.
 */
[[nodiscard]] QStringList textsCutOff(const QWidget& root);

/** All texts in the charts of a widget and its children. */
[[nodiscard]] QStringList chartTexts(const QWidget& root);
