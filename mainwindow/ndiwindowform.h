#pragma once

#include "ui_ndiwindow.h"

/// What the form itself cannot say: colours of the progress, titles and layout of the charts, and what is hidden at
/// first. GUI thread; once, before the window is shown.
void dressForm(const Ui::NDIWindow &form);

/// Lets Tab go through the window column by column, including the controls that the charts have made for
/// themselves since the form was built. GUI thread; any number of times.
void orderFocus(const Ui::NDIWindow &form);
