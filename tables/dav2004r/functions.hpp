#pragma once

// The two functions of the module that compute DAV 2004 R data. The body binds both, then calls the
// second to make `_DAV2004R_DATA`.

#include <Python.h>

namespace marlune::tables::dav2004r {

// _dav_mi_linear(mi_start, mi_ziel): a dict from the calendar years 2004 to 2024 to new lists of
// annual improvement rates. 2004 is a copy of `mi_start`, 2024 one of `mi_ziel`; between them the
// rates move linearly, up to the end of the shorter list. TypeError for anything but two lists.
extern PyMethodDef mi_linear;

// _build_dav2004r_data(): a new dict of the data of the four tables, "Agg_1o", "Agg_2o",
// "SelUlt_1o" and "SelUlt_2o", each a dict of the columns qx_m, qx_f, MI_m and MI_f by age 0 to
// 121, decimal.
extern PyMethodDef build_data;

} // namespace marlune::tables::dav2004r
