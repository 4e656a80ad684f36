#include "app/theme/text_field.h"

#include "app/theme/theme.h"

namespace morvane {

TextField::TextField(Size size, QWidget* parent) : QLineEdit(parent) {
    setFont(MRVTheme::font(size == Size::Large ? 14 : 13));
    setFixedHeight(size == Size::Large ? 36 : 28);
}

}  // namespace morvane
