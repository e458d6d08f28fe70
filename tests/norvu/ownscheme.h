// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include "arguments.h"

#include <tellarix/qt/application.h>
#include <tellarix/qt/scheme.h>

/** A scheme of the test's own, as long as it lives. */
class OwnScheme
{
public:
    Tellarix::Gui::Scheme *operator->() { return &_application.scheme(); }

private:
    Arguments _arguments;
    Tellarix::Gui::Application _application{_arguments.argc, _arguments.argv(), 0};
};
