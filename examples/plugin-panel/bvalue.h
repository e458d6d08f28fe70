// SPDX-License-Identifier: LGPL-3.0-or-later

#pragma once

#include <QVector>

#include <optional>

/** How the numbers of small and large events compare: log10 N(>= M) = a - b M. */
struct BValue
{
    double b{0};
    double error{0};        /**< standard error of b, after Aki (1965) */
    double completeness{0}; /**< events of this magnitude and above were counted */
    int count{0};           /**< of them */
};

/**
 * The b-value by maximum likelihood (Aki 1965), with Utsu's (1966) correction for magnitudes that
 * are rounded to 0.1. They are taken as complete from the most frequent one on.
 *
 * @param magnitudes  in any order; what is no number is left out
 * @return nothing if there are less than 50 events from there on
 */
std::optional<BValue> bValue(const QVector<double> &magnitudes);
