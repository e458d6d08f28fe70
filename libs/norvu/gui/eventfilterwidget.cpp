// SPDX-License-Identifier: LGPL-3.0-or-later

#include <norvu/gui/eventfilterwidget.h>

namespace Norvu {
namespace Gui {

namespace {

std::optional<double> boundOf(const OptionalDoubleSpinBox &input)
{
    return input.isValid() ? std::make_optional(input.value()) : std::nullopt;
}

} // namespace

EventFilterWidget::EventFilterWidget(QWidget *parent) : QWidget(parent)
{
    _ui.setupUi(this);
}

EventFilterWidget::~EventFilterWidget() = default;

EventFilter EventFilterWidget::filter() const
{
    EventFilter filter;
    filter.fromLatitude = boundOf(*_ui.fromLatitude);
    filter.toLatitude = boundOf(*_ui.toLatitude);
    filter.fromLongitude = boundOf(*_ui.fromLongitude);
    filter.toLongitude = boundOf(*_ui.toLongitude);
    filter.fromDepth = boundOf(*_ui.fromDepth);
    filter.toDepth = boundOf(*_ui.toDepth);
    filter.fromMagnitude = boundOf(*_ui.fromMagnitude);
    filter.toMagnitude = boundOf(*_ui.toMagnitude);
    return filter;
}

bool EventFilterWidget::checkLatitude(double /*latitude*/) const
{
    return false;
}

bool EventFilterWidget::checkLongitude(double /*longitude*/) const
{
    return false;
}

bool EventFilterWidget::checkDepth(double /*depth*/) const
{
    return false;
}

bool EventFilterWidget::checkMagnitude(double /*magnitude*/) const
{
    return false;
}

} // namespace Gui
} // namespace Norvu
