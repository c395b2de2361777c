#pragma once

// The static Spanish tables: PASEM2020 (term life and funeral), PEAI2007 (disability), PASEM2010
// and Social Security 1990.
//
// *** Social Security 1990 (IASS90, SS90TOT, SS90ABS): only the rates at ages 18 to 20 and 63 to 65
// *** are published. Every rate from age 21 to age 62 is RECONSTRUCTED and NOT from the
// *** publication. How is said beside the literals. Do not price or reserve with them as if they
// *** were published.
//
// PASEM2020    Dirección General de Seguros y Fondos de Pensiones (DGSFP), resolution of 17
//              December 2020, BOE-A-2020-17154, central year 2019. Second order (best estimate):
//              General annex 1.2, Decesos annex 1.3; first order (with loadings): Rel annex 2.2,
//              NoRel annex 2.3, Decesos annex 2.4. Per mille, ages 0 to 108, 109, 110 or 111: the
//              omegas of the published tables. Read from the gazette and checked against the
//              supervisor's workbook with all decimals. Tested laws: Decesos = 1.6 × General below
//              age 100; first order = 1.101875 (Rel, Decesos) or 1.155 (NoRel) × second order below
//              omega, the loadings that the gazette prints.
// PEAI2007     Study PEAIM/F-2007 of UNESPA, entry into disability; the study itself has not been
//              seen. Decimal, ages 18 to 64; the last rate is an ordinary one. Two sources, all 188
//              values equal.
// PASEM2010    The annex of the study by UNESPA, ICEA and Munich Re on portfolios of 2003 to 2007.
//              Individual business only, whatever the description says. First order, 1.395 ×
//              second order. Decimal, ages 0 to 112, the male column first. The
//              kink at age 100 is published: population rates below, a logistic extrapolation above.
//              All 226 values equal the study and two further copies; BOE-A-2012-9776 itself has not
//              been seen.
// SS 1990      Social Security 1990, unisex, per mille, ages 18 to 65, under ix_m alone. The rate
//              at 65 is 0.0: part of the data. SS90ABS has the rates of IASS90. What they measure
//              is in doubt: probably entry into permanent disability, not deaths.

#include "payload/invariants.hpp"
#include "payload/key_orders.hpp"
#include "payload/record.hpp"

namespace marlune::tables::published {

// ---- PASEM2020, per mille ----

// General (term life without funeral), second order. Annex 1.2.

// clang-format off
// Females, per mille.
inline constexpr Number PASEM2020_Gen_2o_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
      1.5915,   0.1135,   0.0935,   0.0755,   0.0608,   0.0504,   0.0437,   0.0402,   0.0383,   0.0377, // 0
      0.0393,   0.0429,   0.0497,    0.059,   0.0704,    0.083,   0.0948,   0.1049,   0.0984,   0.0956, // 10
      0.0944,   0.0945,   0.0956,   0.0969,   0.0983,   0.0994,   0.0997,   0.0995,   0.0991,   0.0988, // 20
      0.0999,   0.1025,   0.1075,   0.1161,   0.1294,    0.148,   0.1703,   0.1954,   0.2215,    0.248, // 30
      0.2757,   0.3049,   0.3523,   0.4093,   0.4746,   0.5466,    0.627,   0.7194,    0.822,   0.9375, // 40
      1.0643,   1.1634,   1.2671,   1.3732,   1.4801,   1.5873,   1.6961,   1.8083,   1.9268,   2.0549, // 50
      2.1964,   2.3547,   2.5336,    2.736,   2.9649,   3.2227,   3.5128,   3.8402,   4.2129,    4.642, // 60
      5.1422,   5.7316,   6.4295,   7.2535,   8.2172,   9.3311,  10.6097,  12.0803,  13.7859,  15.7856, // 70
     18.1486,  20.9661,  24.3162,  28.2729,  32.9055,  38.2772,  44.4453,  51.4634,  59.3816,  68.2442, // 80
     78.0924,  88.9655, 100.9102, 113.9791, 128.2225, 143.6705, 160.2933, 177.9892, 196.5954, 215.9209, // 90
     235.801, 249.0731, 288.6286, 347.2506, 430.0414, 536.6448, 654.3275, 770.0554, 870.5414, 942.3699, // 100
      1000.0,                                                                                           // 110
};
// Males, per mille.
inline constexpr Number PASEM2020_Gen_2o_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
      1.8185,   0.1309,   0.1093,   0.0899,   0.0739,   0.0626,   0.0555,    0.052,   0.0503,   0.0505, // 0
      0.0537,   0.0607,   0.0735,   0.0927,    0.119,   0.1521,   0.1887,   0.2248,   0.2248,   0.2294, // 10
       0.235,   0.2411,   0.2481,   0.2544,   0.2602,   0.2645,   0.2657,    0.264,   0.2596,   0.2531, // 20
      0.2477,    0.244,   0.2439,   0.2498,   0.2636,   0.2858,   0.3131,   0.3439,   0.3762,   0.4103, // 30
      0.4482,   0.4922,   0.5701,   0.6697,   0.7902,   0.9303,   1.0925,   1.2824,   1.4958,   1.7362, // 40
      2.0005,   2.2156,   2.4443,   2.6864,   2.9427,   3.2152,   3.5063,   3.8184,    4.153,   4.5112, // 50
      4.8936,   5.3009,   5.7356,   6.2018,   6.7055,   7.2544,   7.8573,    8.525,   9.2698,  10.1054, // 60
     11.0475,  12.1145,  13.3273,  14.7075,  16.2778,  18.0613,  20.0826,  22.3702,  24.9547,  27.8701, // 70
     31.1535,  34.8762,  39.0908,  43.8534,  49.2242,  55.2642,  62.0312,  69.5805,  77.9581,  87.1943, // 80
     97.3019, 108.2739, 120.0957,  132.752,  146.243, 160.5926, 175.8244, 191.9485, 208.9543, 226.8097, // 90
    245.4643, 257.5371, 296.8872, 355.6377, 438.6992, 545.4233, 662.7341, 777.5556, 876.8119, 947.4271, // 100
      1000.0,                                                                                           // 110
};
// clang-format on

inline constexpr Payload PASEM2020_Gen_2o{
    .attribute = "PASEM2020_Gen_2o",
    .order = key_order::static_table,
    .table_name = "PASEM2020_General_2ndo.orden",
    .table_type = TableType::life,
    .unit = Unit::per_mille,
    .omega = 110,
    .start_age = 0,
    .description =
        "Tabla de segundo orden para seguros de vida-riesgo general (excluyendo decesos). Basada "
        "en experiencia sectorial española. Las tablas de segundo orden reflejan la mejor "
        "estimación de la realidad, y se usan para reservas técnicas, no para tarificación.",
    .data = {flat("qx_f", literal(PASEM2020_Gen_2o_qx_f)),
             flat("qx_m", literal(PASEM2020_Gen_2o_qx_m))},
};
static_assert(proved<PASEM2020_Gen_2o>());

// Decesos (funeral), second order. Annex 1.3.

// clang-format off
// Females, per mille.
inline constexpr Number PASEM2020_Dec_2o_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
      2.5464,   0.1816,   0.1495,   0.1207,   0.0972,   0.0806,     0.07,   0.0643,   0.0612,   0.0604, // 0
      0.0628,   0.0687,   0.0795,   0.0944,   0.1126,   0.1327,   0.1518,   0.1678,   0.1574,   0.1529, // 10
      0.1511,   0.1512,   0.1529,    0.155,   0.1572,    0.159,   0.1595,   0.1593,   0.1586,   0.1581, // 20
      0.1598,    0.164,    0.172,   0.1858,    0.207,   0.2367,   0.2725,   0.3126,   0.3543,   0.3968, // 30
       0.441,   0.4879,   0.5637,    0.655,   0.7593,   0.8746,   1.0032,    1.151,   1.3152,      1.5, // 40
      1.7029,   1.8615,   2.0274,   2.1971,   2.3681,   2.5397,   2.7137,   2.8932,   3.0828,   3.2879, // 50
      3.5142,   3.7676,   4.0538,   4.3777,   4.7438,   5.1564,   5.6205,   6.1443,   6.7406,   7.4272, // 60
      8.2276,   9.1705,  10.2871,  11.6056,  13.1475,  14.9297,  16.9756,  19.3285,  22.0575,   25.257, // 70
     29.0378,  33.5458,  38.9059,  45.2367,  52.6488,  61.2435,  71.1125,  82.3414,  95.0105, 109.1907, // 80
    124.9478, 142.3447, 161.4563, 182.3665,  205.156, 229.8729, 256.4692, 284.7828, 314.5526, 345.4734, // 90
    392.9321, 446.9183, 509.1276, 577.7148, 649.9505, 722.5567, 792.0432, 855.0432, 908.6501,  950.753, // 100
     980.373,   1000.0,                                                                                 // 110
};
// Males, per mille.
inline constexpr Number PASEM2020_Dec_2o_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
      2.9096,   0.2094,   0.1749,   0.1438,   0.1182,   0.1002,   0.0889,   0.0832,   0.0806,   0.0808, // 0
       0.086,   0.0971,   0.1175,   0.1483,   0.1904,   0.2433,   0.3018,   0.3597,   0.3596,    0.367, // 10
       0.376,   0.3857,   0.3969,   0.4071,   0.4164,   0.4232,   0.4251,   0.4224,   0.4154,    0.405, // 20
      0.3963,   0.3903,   0.3902,   0.3996,   0.4218,   0.4572,    0.501,   0.5502,    0.602,   0.6564, // 30
      0.7171,   0.7876,   0.9122,   1.0715,   1.2643,   1.4885,    1.748,   2.0518,   2.3933,    2.778, // 40
      3.2008,    3.545,   3.9109,   4.2982,   4.7083,   5.1443,   5.6101,   6.1094,   6.6448,    7.218, // 50
      7.8298,   8.4814,   9.1769,   9.9229,  10.7288,   11.607,  12.5717,    13.64,  14.8317,  16.1686, // 60
      17.676,  19.3832,  21.3236,   23.532,  26.0445,   28.898,  32.1322,  35.7924,  39.9275,  44.5922, // 70
     49.8457,  55.8019,  62.5452,  70.1654,  78.7588,  88.4226,    99.25, 111.3288,  124.733, 139.5108, // 80
    155.6831, 173.2382, 192.1531, 212.4032, 233.9889, 256.9482, 281.3191, 307.1176,  334.327, 362.8955, // 90
    408.0674,  459.664, 519.6055, 586.0881, 656.4181, 727.3466, 795.4047, 857.2378, 909.9408, 951.3929, // 100
    980.5922,   1000.0,                                                                                 // 110
};
// clang-format on

inline constexpr Payload PASEM2020_Dec_2o{
    .attribute = "PASEM2020_Dec_2o",
    .order = key_order::static_table,
    .table_name = "PASEM2020_Decesos_2ndo.orden",
    .table_type = TableType::life,
    .unit = Unit::per_mille,
    .omega = 111,
    .start_age = 0,
    .description =
        "Tabla de segundo orden para seguros de decesos. Refleja la experiencia específica de "
        "este ramo en España. Las tablas de segundo orden no incluyen recargos de prudencia y se "
        "destinan al cálculo de provisiones técnicas. Adopted under the Dirección General de "
        "Seguros y Fondos de Pensiones (DGSFP) regulatory framework.",
    .data = {flat("qx_f", literal(PASEM2020_Dec_2o_qx_f)),
             flat("qx_m", literal(PASEM2020_Dec_2o_qx_m))},
};
static_assert(proved<PASEM2020_Dec_2o>());

// Related to other operations (such as mortgages), first order. Annex 2.2.

// clang-format off
// Females, per mille.
inline constexpr Number PASEM2020_Rel_1o_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
      1.7537,   0.1251,    0.103,   0.0832,    0.067,   0.0555,   0.0482,   0.0443,   0.0422,   0.0416, // 0
      0.0433,   0.0473,   0.0547,    0.065,   0.0775,   0.0914,   0.1045,   0.1155,   0.1084,   0.1053, // 10
      0.1041,   0.1041,   0.1053,   0.1067,   0.1083,   0.1095,   0.1099,   0.1097,   0.1092,   0.1089, // 20
      0.1101,   0.1129,   0.1185,   0.1279,   0.1426,    0.163,   0.1877,   0.2153,    0.244,   0.2733, // 30
      0.3037,    0.336,   0.3882,   0.4511,   0.5229,   0.6023,   0.6909,   0.7927,   0.9058,    1.033, // 40
      1.1728,    1.282,   1.3962,   1.5131,   1.6308,    1.749,   1.8688,   1.9925,    2.123,   2.2643, // 50
      2.4202,   2.5946,   2.7917,   3.0148,   3.2669,    3.551,   3.8706,   4.2314,   4.6421,   5.1149, // 60
      5.6661,   6.3155,   7.0845,   7.9925,   9.0543,  10.2817,  11.6906,   13.311,  15.1904,  17.3938, // 70
     19.9975,  23.1021,  26.7934,  31.1532,  36.2577,  42.1767,  48.9732,  56.7062,  65.4311,  75.1965, // 80
      86.048,  98.0288, 111.1904, 125.5907, 141.2852,  158.307, 176.6231, 196.1219, 216.6235, 237.9178, // 90
    259.8232, 274.4474, 318.0326, 382.6268, 473.8518, 591.3155, 720.9872, 848.5048, 959.2278,   1000.0, // 100
};
// Males, per mille.
inline constexpr Number PASEM2020_Rel_1o_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
      2.0038,   0.1442,   0.1204,    0.099,   0.0814,    0.069,   0.0612,   0.0573,   0.0555,   0.0556, // 0
      0.0592,   0.0668,   0.0809,   0.1021,   0.1311,   0.1676,   0.2079,   0.2477,   0.2477,   0.2527, // 10
       0.259,   0.2656,   0.2733,   0.2804,   0.2867,   0.2915,   0.2928,   0.2909,    0.286,   0.2789, // 20
      0.2729,   0.2688,   0.2687,   0.2752,   0.2905,   0.3149,    0.345,   0.3789,   0.4146,    0.452, // 30
      0.4939,   0.5424,   0.6282,   0.7379,   0.8707,   1.0251,   1.2038,    1.413,   1.6482,   1.9131, // 40
      2.2043,   2.4413,   2.6933,     2.96,   3.2425,   3.5427,   3.8635,   4.2074,   4.5761,   4.9708, // 50
      5.3921,   5.8409,   6.3199,   6.8336,   7.3887,   7.9934,   8.6578,   9.3935,  10.2142,  11.1348, // 60
      12.173,  13.3487,   14.685,  16.2058,  17.9361,  19.9013,  22.1286,  24.6492,  27.4969,  30.7094, // 70
     34.3273,  38.4292,  43.0731,  48.3209,   54.239,  60.8942,  68.3507,   76.669,  85.9001,  96.0772, // 80
    107.2146, 119.3043, 132.3305, 146.2761, 161.1415,  176.953, 193.7365, 211.5033, 230.2416, 249.9159, // 90
     270.471, 283.7737, 327.1326, 391.8683, 483.3917, 600.9883, 730.2501, 856.7691, 966.1372,   1000.0, // 100
};
// clang-format on

inline constexpr Payload PASEM2020_Rel_1o{
    .attribute = "PASEM2020_Rel_1o",
    .order = key_order::static_table,
    .table_name = "PASEM2020_Rel_1er.orden",
    .table_type = TableType::life,
    .unit = Unit::per_mille,
    .omega = 109,
    .start_age = 0,
    .description =
        "Tabla de primer orden para seguros vida-riesgo relacionados con otras operaciones (por "
        "ejemplo, asociados a hipotecas u otros seguros). Las tablas de primer orden se usan "
        "para tarificación y contienen recargos de prudencia. Adopted under the Dirección "
        "General de Seguros y Fondos de Pensiones (DGSFP) regulatory framework.",
    .data = {flat("qx_f", literal(PASEM2020_Rel_1o_qx_f)),
             flat("qx_m", literal(PASEM2020_Rel_1o_qx_m))},
};
static_assert(proved<PASEM2020_Rel_1o>());

// Not related, first order. Annex 2.3.

// clang-format off
// Females, per mille.
inline constexpr Number PASEM2020_NoRel_1o_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
      1.8382,   0.1311,   0.1079,   0.0872,   0.0702,   0.0582,   0.0505,   0.0464,   0.0442,   0.0436, // 0
      0.0453,   0.0496,   0.0574,   0.0681,   0.0813,   0.0958,   0.1096,   0.1211,   0.1136,   0.1104, // 10
      0.1091,   0.1091,   0.1104,   0.1119,   0.1135,   0.1148,   0.1151,    0.115,   0.1145,   0.1142, // 20
      0.1154,   0.1184,   0.1242,   0.1341,   0.1495,   0.1709,   0.1967,   0.2256,   0.2558,   0.2865, // 30
      0.3184,   0.3522,   0.4069,   0.4728,   0.5481,   0.6314,   0.7242,   0.8309,   0.9494,   1.0828, // 40
      1.2293,   1.3438,   1.4635,   1.5861,   1.7095,   1.8334,   1.9589,   2.0885,   2.2254,   2.3735, // 50
      2.5368,   2.7197,   2.9263,   3.1601,   3.4244,   3.7222,   4.0573,   4.4355,   4.8659,   5.3615, // 60
      5.9393,     6.62,    7.426,   8.3778,   9.4908,  10.7774,  12.2542,  13.9528,  15.9228,  18.2324, // 70
     20.9617,  24.2159,  28.0852,  32.6552,  38.0058,  44.2102,  51.3343,  59.4402,  68.5857,   78.822, // 80
     90.1967, 102.7551, 116.5513, 131.6458,  148.097, 165.9395, 185.1387, 205.5776, 227.0677, 249.3886, // 90
    272.3501, 287.6794,  333.366, 401.0745, 496.6978, 619.8248, 755.7483,  889.414,   1000.0,           // 100
};
// Males, per mille.
inline constexpr Number PASEM2020_NoRel_1o_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
      2.1004,   0.1512,   0.1262,   0.1038,   0.0854,   0.0723,   0.0642,   0.0601,   0.0581,   0.0583, // 0
      0.0621,   0.0701,   0.0848,    0.107,   0.1374,   0.1756,   0.2179,   0.2597,   0.2596,   0.2649, // 10
      0.2715,   0.2784,   0.2865,   0.2939,   0.3006,   0.3055,   0.3069,   0.3049,   0.2998,   0.2923, // 20
      0.2861,   0.2818,   0.2817,   0.2885,   0.3045,   0.3301,   0.3617,   0.3972,   0.4345,   0.4738, // 30
      0.5177,   0.5685,   0.6585,   0.7735,   0.9126,   1.0745,   1.2618,   1.4811,   1.7277,   2.0053, // 40
      2.3106,    2.559,   2.8232,   3.1028,   3.3988,   3.7135,   4.0498,   4.4102,   4.7967,   5.2105, // 50
      5.6521,   6.1225,   6.6246,   7.1631,   7.7449,   8.3788,   9.0752,   9.8463,  10.7066,  11.6717, // 60
     12.7599,  13.9922,   15.393,  16.9872,  18.8009,  20.8608,  23.1954,  25.8376,  28.8226,    32.19, // 70
     35.9823,   40.282,  45.1498,  50.6507,   56.854,  63.8301,  71.6461,  80.3654,  90.0416, 100.7094, // 80
    112.3837, 125.0563, 138.7105, 153.3286, 168.9107, 185.4845, 203.0772, 221.7005, 241.3423, 261.9652, // 90
    283.5113, 297.4553, 342.9047, 410.7615, 506.6976, 629.9639, 765.4579, 898.0767,   1000.0,           // 100
};
// clang-format on

inline constexpr Payload PASEM2020_NoRel_1o{
    .attribute = "PASEM2020_NoRel_1o",
    .order = key_order::static_table,
    .table_name = "PASEM2020_NoRel_1er.orden",
    .table_type = TableType::life,
    .unit = Unit::per_mille,
    .omega = 108,
    .start_age = 0,
    .description =
        "Tabla de primer orden para el resto de seguros vida-riesgo, sin incluir decesos ni "
        "productos relacionados. Las tablas de primer orden se emplean en la tarificación y "
        "llevan incorporados recargos de prudencia. Adopted under the Dirección General de "
        "Seguros y Fondos de Pensiones (DGSFP) regulatory framework.",
    .data = {flat("qx_f", literal(PASEM2020_NoRel_1o_qx_f)),
             flat("qx_m", literal(PASEM2020_NoRel_1o_qx_m))},
};
static_assert(proved<PASEM2020_NoRel_1o>());

// Decesos (funeral), first order. Annex 2.4.

// clang-format off
// Females, per mille.
inline constexpr Number PASEM2020_Dec_1o_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
      2.8059,   0.2001,   0.1648,    0.133,   0.1071,   0.0888,   0.0771,   0.0709,   0.0675,   0.0665, // 0
      0.0692,   0.0757,   0.0875,    0.104,   0.1241,   0.1463,   0.1672,   0.1849,   0.1735,   0.1685, // 10
      0.1665,   0.1666,   0.1685,   0.1708,   0.1732,   0.1752,   0.1758,   0.1755,   0.1748,   0.1743, // 20
      0.1761,   0.1807,   0.1896,   0.2047,   0.2281,   0.2609,   0.3003,   0.3444,   0.3904,   0.4373, // 30
       0.486,   0.5376,   0.6211,   0.7217,   0.8366,   0.9637,   1.1054,   1.2683,   1.4492,   1.6528, // 40
      1.8764,   2.0511,    2.234,    2.421,   2.6094,   2.7985,   2.9901,    3.188,   3.3969,   3.6229, // 50
      3.8723,   4.1514,   4.4667,   4.8236,   5.2271,   5.6817,    6.193,   6.7703,   7.4273,   8.1838, // 60
      9.0657,  10.1048,  11.3351,  12.7879,  14.4869,  16.4507,   18.705,  21.2976,  24.3046,    27.83, // 70
     31.9961,  36.9633,  42.8694,  49.8451,  58.0124,  67.4827,   78.357,  90.7299, 104.6897, 120.3145, // 80
    137.6768, 156.8461, 177.9047, 200.9451, 226.0563, 253.2912,  282.597,  313.795, 346.5977, 380.6686, // 90
     432.962, 492.4481, 560.9949, 636.5695, 716.1642, 796.1672, 872.7325, 942.1507,   1000.0,           // 100
};
// Males, per mille.
inline constexpr Number PASEM2020_Dec_1o_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
       3.206,   0.2308,   0.1927,   0.1585,   0.1303,   0.1104,   0.0979,   0.0917,   0.0888,    0.089, // 0
      0.0947,    0.107,   0.1295,   0.1634,   0.2097,   0.2681,   0.3326,   0.3963,   0.3963,   0.4044, // 10
      0.4143,    0.425,   0.4373,   0.4486,   0.4588,   0.4663,   0.4685,   0.4654,   0.4577,   0.4462, // 20
      0.4367,   0.4301,     0.43,   0.4404,   0.4647,   0.5038,    0.552,   0.6063,   0.6633,   0.7233, // 30
      0.7902,   0.8678,   1.0051,   1.1807,   1.3931,   1.6401,   1.9261,   2.2608,   2.6371,    3.061, // 40
      3.5269,   3.9061,   4.3093,   4.7361,    5.188,   5.6683,   6.1817,   6.7318,   7.3217,   7.9533, // 50
      8.6274,   9.3454,  10.1118,  10.9337,  11.8218,  12.7895,  13.8524,  15.0295,  16.3427,  17.8157, // 60
     19.4767,  21.3579,   23.496,  25.9293,  28.6978,   31.842,  35.4057,  39.4387,  43.9951,   49.135, // 70
     54.9237,  61.4868,   68.917,  77.3135,  86.7823,  97.4307, 109.3611, 122.6704, 137.4401, 153.7235, // 80
    171.5433, 190.8868, 211.7287, 234.0418, 257.8265, 283.1248, 309.9785, 338.4052, 368.3865, 399.8654, // 90
    449.6393, 506.4923, 572.5403, 645.7958, 723.2906,  801.445, 876.4365, 944.5689,   1000.0,           // 100
};
// clang-format on

inline constexpr Payload PASEM2020_Dec_1o{
    .attribute = "PASEM2020_Dec_1o",
    .order = key_order::static_table,
    .table_name = "PASEM2020_Decesos_1er.orden",
    .table_type = TableType::life,
    .unit = Unit::per_mille,
    .omega = 108,
    .start_age = 0,
    .description =
        "Tabla de primer orden para seguros de decesos. Usada para el cálculo de primas y "
        "provisiones en seguros de decesos. Las tablas de primer orden incorporan márgenes de "
        "seguridad para la tarificación de nuevas pólizas. Adopted under the Dirección General "
        "de Seguros y Fondos de Pensiones (DGSFP) regulatory framework.",
    .data = {flat("qx_f", literal(PASEM2020_Dec_1o_qx_f)),
             flat("qx_m", literal(PASEM2020_Dec_1o_qx_m))},
};
static_assert(proved<PASEM2020_Dec_1o>());

// ---- PEAI2007, decimal ----

// Individual business. PEAIM/F-2007, IAP.

// clang-format off
// Females, decimal.
inline constexpr Number PEAI2007_IAP_Ind_ix_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
                                                                                    0.000054,  0.00006, // 10
    0.000065, 0.000072,  0.00008, 0.000088, 0.000098, 0.000108, 0.000119, 0.000132, 0.000145,  0.00016, // 20
    0.000178, 0.000196, 0.000217,  0.00024, 0.000264, 0.000293, 0.000324, 0.000358, 0.000395, 0.000436, // 30
    0.000483, 0.000534, 0.000589, 0.000652,  0.00072, 0.000797,  0.00088, 0.000973, 0.001075, 0.001189, // 40
    0.001314, 0.001451, 0.001605, 0.001774,  0.00196, 0.002166, 0.002394, 0.002645, 0.002924, 0.003232, // 50
    0.003573, 0.003949, 0.004364, 0.004824, 0.005332,                                                   // 60
};
// Males, decimal.
inline constexpr Number PEAI2007_IAP_Ind_ix_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
                                                                                    0.000064, 0.000071, // 10
     0.00008, 0.000088, 0.000099,  0.00011, 0.000122, 0.000137, 0.000151, 0.000169, 0.000188, 0.000209, // 20
    0.000233,  0.00026, 0.000289, 0.000322, 0.000359, 0.000399, 0.000445, 0.000494, 0.000551, 0.000614, // 30
    0.000682,  0.00076, 0.000846, 0.000942, 0.001049, 0.001167,   0.0013, 0.001447, 0.001611, 0.001794, // 40
    0.001997, 0.002223, 0.002475, 0.002756, 0.003069, 0.003416, 0.003803, 0.004234, 0.004714, 0.005247, // 50
    0.005842, 0.006504, 0.007241, 0.008063, 0.008977,                                                   // 60
};
// clang-format on

inline constexpr Payload PEAI2007_IAP_Ind{
    .attribute = "PEAI2007_IAP_Ind",
    .order = key_order::static_table,
    .table_name = "PEAI2007_Invalidez_Individual",
    .table_type = TableType::disability,
    .omega = 64,
    .start_age = 18,
    .description =
        "Tabla de probabilidades anuales de entrada en Invalidez Absoluta y Permanente (IAP) "
        "para negocio individual, obtenida del estudio PEAIM/F-2007. Se trata de una tabla "
        "best-estimate basada en 5,4 millones de pólizas españolas observadas entre 1998 y 2002. "
        "Adopted under the Dirección General de Seguros y Fondos de Pensiones (DGSFP) regulatory "
        "framework.",
    .data = {flat("ix_f", literal(PEAI2007_IAP_Ind_ix_f)),
             flat("ix_m", literal(PEAI2007_IAP_Ind_ix_m))},
};
static_assert(proved<PEAI2007_IAP_Ind>());

// Collective business. PEAIM/F-2007, IAP.

// clang-format off
// Females, decimal.
inline constexpr Number PEAI2007_IAP_Col_ix_f[] = {
    //    0        1        2        3        4        5        6        7        8        9
                                                                            0.00009,  0.0001, // 10
     0.0001, 0.00012, 0.00013, 0.00014, 0.00016, 0.00017, 0.00019, 0.00021, 0.00023, 0.00026, // 20
    0.00029, 0.00031, 0.00035, 0.00039, 0.00042, 0.00047, 0.00052, 0.00057, 0.00063,  0.0007, // 30
    0.00077, 0.00086, 0.00095, 0.00105, 0.00116, 0.00128, 0.00141, 0.00156, 0.00173, 0.00191, // 40
    0.00211, 0.00233, 0.00257, 0.00285, 0.00315, 0.00348, 0.00384, 0.00425, 0.00469, 0.00519, // 50
    0.00573, 0.00634, 0.00701, 0.00774, 0.00856,                                              // 60
};
// Males, decimal.
inline constexpr Number PEAI2007_IAP_Col_ix_m[] = {
    //      0          1          2          3          4          5          6          7          8          9
                                                                                            0.0001051, 0.0001164, // 10
    0.0001292, 0.0001448, 0.0001605, 0.0001789, 0.0002002, 0.0002215, 0.0002471, 0.0002755, 0.0003067, 0.0003408, // 20
    0.0003806, 0.0004232, 0.0004714,  0.000524, 0.0005836, 0.0006504, 0.0007242, 0.0008051, 0.0008974, 0.0009983, // 30
    0.0011119, 0.0012382, 0.0013774, 0.0015336, 0.0017083, 0.0019014, 0.0021172, 0.0023572, 0.0026242, 0.0029209, // 40
    0.0032518,  0.003621, 0.0040314, 0.0044872, 0.0049956, 0.0055621, 0.0061926, 0.0068941, 0.0076751, 0.0085456, // 50
     0.009514, 0.0105918, 0.0117917, 0.0131293, 0.0146161,                                                        // 60
};
// clang-format on

inline constexpr Payload PEAI2007_IAP_Col{
    .attribute = "PEAI2007_IAP_Col",
    .order = key_order::static_table,
    .table_name = "PEAI2007_Invalidez_Colectivo",
    .table_type = TableType::disability,
    .omega = 64,
    .start_age = 18,
    .description =
        "Tabla de probabilidades anuales de entrada en Invalidez Absoluta y Permanente (IAP) "
        "para negocio colectivo según el estudio PEAIM/F-2007. Incluye tasas significativamente "
        "superiores a individual, reflejando la menor selección médica y la naturaleza "
        "profesional de los colectivos.",
    .data = {flat("ix_f", literal(PEAI2007_IAP_Col_ix_f)),
             flat("ix_m", literal(PEAI2007_IAP_Col_ix_m))},
};
static_assert(proved<PEAI2007_IAP_Col>());

// ---- PASEM2010, decimal ----

// clang-format off
// Males, decimal.
inline constexpr Number PASEM2010_qx_m[] = {
    //     0         1         2         3         4         5         6         7         8         9
    0.005807, 0.000418, 0.000349, 0.000287, 0.000236,   0.0002, 0.000177, 0.000165, 0.000159, 0.000159, // 0
    0.000169, 0.000191, 0.000232, 0.000294, 0.000379, 0.000486, 0.000604,  0.00072, 0.000719, 0.000732, // 10
    0.000748, 0.000765, 0.000785, 0.000803, 0.000819,  0.00083, 0.000831, 0.000823, 0.000807, 0.000785, // 20
    0.000767, 0.000755, 0.000755, 0.000774, 0.000818, 0.000888, 0.000974,  0.00107,  0.00117, 0.001274, // 30
    0.001389,  0.00153,  0.00171, 0.001927, 0.002173, 0.002439, 0.002727, 0.003048, 0.003393, 0.003774, // 40
    0.004187, 0.004634, 0.005092, 0.005572, 0.006094, 0.006676,   0.0073, 0.007959, 0.008602, 0.009213, // 50
    0.009793,  0.01035, 0.010892, 0.011451, 0.012051, 0.012703, 0.014059, 0.015664, 0.017562, 0.019807, // 60
     0.02246, 0.025605, 0.029354, 0.033833, 0.039202, 0.045637, 0.053345, 0.062555, 0.073532, 0.086547, // 70
    0.096814, 0.108179, 0.120688, 0.134417, 0.149484, 0.166049, 0.184195, 0.203925,  0.22515, 0.247704, // 80
    0.271358, 0.295823, 0.320854, 0.346242, 0.371835,  0.39755, 0.423336, 0.449171, 0.475035, 0.500918, // 90
    0.526808, 0.583877, 0.618746, 0.654849, 0.692209, 0.730838, 0.770736, 0.811884, 0.854241, 0.897733, // 100
    0.942245, 0.987609,      1.0,                                                                       // 110
};
// Females, decimal.
inline constexpr Number PASEM2010_qx_f[] = {
    //     0         1         2         3         4         5         6         7         8         9
    0.004744, 0.000376, 0.000307, 0.000245, 0.000195, 0.000157, 0.000132, 0.000118, 0.000113, 0.000115, // 0
    0.000123, 0.000134, 0.000149, 0.000169, 0.000194, 0.000223, 0.000253, 0.000279,   0.0003, 0.000312, // 10
    0.000318, 0.000319, 0.000317, 0.000315, 0.000317, 0.000322, 0.000301,  0.00029, 0.000284, 0.000282, // 20
    0.000277, 0.000301, 0.000328, 0.000362, 0.000414, 0.000478, 0.000556, 0.000641, 0.000732, 0.000848, // 30
    0.000978, 0.001117, 0.001251,  0.00137, 0.001477, 0.001586, 0.001707,  0.00185, 0.002017, 0.002218, // 40
    0.002452, 0.002725, 0.003012,  0.00328, 0.003517, 0.003732, 0.003947, 0.004169, 0.004393, 0.004598, // 50
    0.004801,  0.00503, 0.005293, 0.005598, 0.005984, 0.006501, 0.007148, 0.007931, 0.008878, 0.009992, // 60
    0.011267, 0.012705, 0.014313, 0.017578, 0.021666, 0.026885, 0.030905, 0.035669, 0.041312, 0.047972, // 70
    0.055808, 0.064946, 0.075514, 0.087641, 0.101439, 0.117042, 0.134524, 0.153931, 0.175256, 0.198432, // 80
    0.223304, 0.249693, 0.277406, 0.306291, 0.336236, 0.367161, 0.398976,  0.43153, 0.464635,  0.49808, // 90
    0.531667, 0.559229, 0.595678, 0.633277, 0.672036,  0.71195, 0.753003, 0.795159, 0.838361, 0.882519, // 100
    0.927507, 0.973152,      1.0,                                                                       // 110
};
// clang-format on

inline constexpr Payload PASEM2010{
    .attribute = "PASEM2010",
    .order = key_order::static_table,
    .table_name = "PASEM2010",
    .table_type = TableType::life,
    .omega = 112,
    .start_age = 0,
    .description =
        "Tablas PASEM 2010 (BOE-A-2012-9776): Tablas biométricas de mortalidad por edad y sexo "
        "utilizadas para seguros colectivos de vida y previsión social en España. Estas tablas "
        "se emplean para el cálculo de primas, reservas y capitales en seguros colectivos. "
        "Cubren edades de 0 a 112 años. Adopted under the Dirección General de Seguros y Fondos "
        "de Pensiones (DGSFP) regulatory framework.",
    .data = {flat("qx_m", literal(PASEM2010_qx_m)), flat("qx_f", literal(PASEM2010_qx_f))},
};
static_assert(proved<PASEM2010>());

// ---- Social Security 1990, per mille, unisex ----
//
// RECONSTRUCTED, NOT PUBLISHED: ages 21 to 62 of both columns below. The published rates of these
// ages have not been found. In their place stands a cubic Hermite curve through the logarithms of
// the known rates at ages 20 and 63, with the known step from 19 to 20 as left slope and slope 0 on
// the right, rounded to four decimals below 1 and to three from 1. Published are ages 18, 19, 20,
// 63, 64 and 65.

// Mortality of invalids; SS90ABS holds the same rates.
// clang-format off
// Unisex, per mille. Ages 21 to 62 are reconstructed, not published.
inline constexpr Number IASS90_ix_m[] = {
    //   0       1       2       3       4       5       6       7       8       9
                                                                    0.1386, 0.1521, // 10
    0.1669, 0.1837, 0.2033, 0.2261, 0.2528, 0.2838,   0.32, 0.3622, 0.4112, 0.4683, // 20
    0.5346, 0.6117, 0.7011, 0.8048, 0.9249,  1.063,  1.223,  1.407,  1.617,  1.858, // 30
     2.132,  2.442,  2.791,  3.183,  3.621,  4.105,  4.639,  5.221,  5.852,  6.529, // 40
     7.248,  8.003,  8.785,  9.586, 10.391, 11.187, 11.957, 12.682, 13.343, 13.922, // 50
    14.399, 14.757,  14.98, 15.056, 14.367,    0.0,                                 // 60
};
// clang-format on

// The insured population.
// clang-format off
// Unisex, per mille. Ages 21 to 62 are reconstructed, not published.
inline constexpr Number SS90TOT_ix_m[] = {
    //   0       1       2       3       4       5       6       7       8       9
                                                                    0.1074,  0.122, // 10
    0.1382, 0.1566, 0.1775, 0.2013, 0.2282, 0.2588, 0.2934, 0.3325, 0.3766, 0.4263, // 20
    0.4821, 0.5446, 0.6145, 0.6924,  0.779,  0.875,  0.981,  1.098,  1.226,  1.365, // 30
     1.517,  1.681,  1.857,  2.046,  2.247,   2.46,  2.684,  2.917,  3.159,  3.407, // 40
     3.659,  3.913,  4.167,  4.416,  4.658,   4.89,  5.106,  5.305,  5.481,  5.632, // 50
     5.753,  5.843,  5.898,  5.917,  3.678,    0.0,                                 // 60
};
// clang-format on

inline constexpr Payload IASS90{
    .attribute = "IASS90",
    .order = key_order::sex_independent_after_ages,
    .table_name = "IASS-90",
    .table_type = TableType::disability,
    .sex_independent = true,
    .unit = Unit::per_mille,
    .omega = 65,
    .start_age = 18,
    .description =
        "Tabla histórica de mortalidad de inválidos del Instituto Nacional de la Seguridad "
        "Social (1990)",
    .data = {flat("ix_m", literal(IASS90_ix_m))},
    .deviations = {.last_decrement = 0.0},
};
static_assert(proved<IASS90>());

inline constexpr Payload SS90TOT{
    .attribute = "SS90TOT",
    .order = key_order::sex_independent_after_ages,
    .table_name = "SS90-TOT",
    .table_type = TableType::disability,
    .sex_independent = true,
    .unit = Unit::per_mille,
    .omega = 65,
    .start_age = 18,
    .description =
        "Tabla general de mortalidad de la población de la Seguridad Social española (1990)",
    .data = {flat("ix_m", literal(SS90TOT_ix_m))},
    .deviations = {.last_decrement = 0.0},
};
static_assert(proved<SS90TOT>());

// The very rates of IASS90, in a list of its own.
inline constexpr Payload SS90ABS{
    .attribute = "SS90ABS",
    .order = key_order::sex_independent_after_ages,
    .table_name = "SS90-ABS",
    .table_type = TableType::disability,
    .sex_independent = true,
    .unit = Unit::per_mille,
    .omega = 65,
    .start_age = 18,
    .description =
        "Tabla de mortalidad específica por accidentes y enfermedades profesionales (Seguridad "
        "Social, 1990)",
    .data = {flat("ix_m", literal(IASS90_ix_m))},
    .deviations = {.last_decrement = 0.0},
};
static_assert(proved<SS90ABS>());

} // namespace marlune::tables::published
