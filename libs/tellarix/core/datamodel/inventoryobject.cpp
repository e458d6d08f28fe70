// SPDX-License-Identifier: LGPL-3.0-or-later

#include <tellarix/core/datamodel/inventoryobject.h>

#include <utility>

namespace Tellarix {
namespace DataModel {

InventoryObject::InventoryObject(std::string code) : _code(std::move(code))
{}

InventoryObject::~InventoryObject() = default;

InventorySite::~InventorySite() = default;

} // namespace DataModel
} // namespace Tellarix
