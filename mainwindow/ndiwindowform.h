#pragma once

#include "ui_ndiwindow.h"

/// Lets Tab go through the window column by column, including the controls that the charts have made for
/// themselves since the form was built. GUI thread; any number of times.
void orderFocus(const Ui::NDIWindow &form);
