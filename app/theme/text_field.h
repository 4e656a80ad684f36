// A one-line text input.
#pragma once

#include <QLineEdit>

namespace morvane {

/// Large: 36 high, 14 px (a project's name). Small: 28 high, 13 px (in a sheet).
class TextField : public QLineEdit {
    Q_OBJECT

public:
    enum class Size { Large, Small };

    explicit TextField(Size size, QWidget* parent = nullptr);
};

}  // namespace morvane
