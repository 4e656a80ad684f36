// The small pieces the organizer's panels are made of.
#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QString>
#include <QWidget>

class QLabel;

namespace morvane {

/// A label of plain text in one line; never interprets markup, so file names show as they are.
QLabel* makeLabel(int px, const QColor& color, QWidget* parent);
QLabel* makeBoldLabel(int px, const QColor& color, QWidget* parent);

/// A rounded surface in the panel colour with a hairline border.
class Card : public QWidget {
    Q_OBJECT

public:
    Card(int radius, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int radius_;
};

/// A hairline across the widget's middle.
class Rule : public QWidget {
    Q_OBJECT

public:
    Rule(Qt::Orientation orientation, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Qt::Orientation orientation_;
};

/// The round badge of a step: its number, or a check mark once the step is done.
class StepBadge : public QWidget {
    Q_OBJECT

public:
    StepBadge(int number, QWidget* parent);

    bool isDone() const { return done_; }
    void setDone(bool done);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int number_;
    bool done_ = false;
};

/// A chevron and a title that open and close something below; the chevron tells which.
class DisclosureButton : public QAbstractButton {
    Q_OBJECT

public:
    DisclosureButton(const QString& title, QWidget* parent);

    const QString& symbol() const { return symbol_; }
    void setSymbol(const QString& name);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString symbol_;
};

}  // namespace morvane
