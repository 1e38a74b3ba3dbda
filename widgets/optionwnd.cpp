#include "widgets/optionwnd.h"

OptionWnd::OptionWnd(QWidget *parent) : QWidget(parent) {}
