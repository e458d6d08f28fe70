// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

namespace Workbench {

/** Where rows show their spectrograms. */
enum class SpectrogramPlace
{
    Behind = 0,  /**< behind the traces, which are drawn so that the picture can be seen */
    Above = 1,   /**< in a band of its own above the traces */
    Instead = 2, /**< in the place of the traces, as far as there is a picture */
};

} // namespace Workbench
