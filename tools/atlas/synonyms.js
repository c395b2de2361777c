// Words that people type for the same thing. Where a table's purpose, source or kind has the first
// of a line, whole, it is found by the others too.

const ANNUITY = (
  "annuity annuities annuitant annuitants rentas renta rente renten vitalicia vitalicias " +
  "rentenversicherung pension pensions pensiones"
).split(" ");

// Other names of tables, by a part of ours.
export const NAMES = [
  [/^GRMF/, "GRM GRF"],
  [/^GKMF/, "GKM GKF"],
  [/^PER2020/, "PERM2020 PERF2020 PERMF2020 PERM-2020"],
  [/^PASEM/, "PASEMF"],
  [/^PEAI2007_IAP/, "PEAIMF2007-IPA-INCAPACIDAD-PERMANENTE"],
];

export const SYNONYMS = [
  ["spain", "spanish", "españa", "española", "españolas", "es", "esp"],
  ["germany", "german", "deutschland", "deutsche", "alemania", "alemana", "de", "ger", "deu"],
  ["united states", "american", "america", "us", "usa", "estados unidos", "americana"],
  ["switzerland", "swiss", "schweiz", "schweizer", "suisse", "suiza", "suizas", "ch", "che"],
  ["chile", "chilean", "chilena", "chilenas", "cl", "chl"],
  [
    "united kingdom",
    "british",
    "britain",
    "english",
    "england",
    "inglesa",
    "uk",
    "gb",
    "gbr",
    "reino unido",
  ],
  ["annuities", ...ANNUITY],
  ["annuity", ...ANNUITY],
  ["pensioners", "pensioner", "vejez", "jubilacion", "jubilados", "retirement", ...ANNUITY],
  ["survival", "supervivencia", "longevity", "jubilacion", "retirement", ...ANNUITY],
  ["pension plans", "pension", "pensions", "planes", "pensiones", "jubilacion"],
  ["life risk", "term", "assurance", "insurance", "vida", "riesgo", "risikoleben", "fallecimiento"],
  ["death cover", "term", "assurance", "insurance", "vida", "riesgo", "fallecimiento"],
  ["assurances", "assurance", "insurance", "assured", "lives", "lebensversicherung"],
  ["group life", "gruppenleben", "kapital", "insurance", "assurance"],
  ["permanent disability", "incapacidad", "permanente", "ipa", "iap", "erwerbsunfähigkeit"],
  ["survivors", "survivor", "sobrevivencia"],
  ["premiums", "premium", "pricing", "primas", "tariff"],
  ["reserves", "reserve", "reserving", "reservas", "valuation"],
  ["life", "death", "mortality", "deaths", "muerte", "mortalidad", "sterblichkeit"],
  ["disability", "disabled", "invalidity", "incapacidad", "invalidez", "invalidität", "morbidity"],
  ["invalids", "invalid", "invalidos", "disabled", "invalidez"],
  ["exit", "lapse", "withdrawal", "turnover"],
  ["funeral", "decesos", "burial"],
  ["mortgages", "mortgage", "hipotecas", "hipoteca", "loan"],
  ["group", "collective", "colectivo"],
  ["individual", "individuals"],
  ["accidents", "accident", "accidentes", "accidente"],
  ["first order", "loaded", "1o", "erster ordnung", "primer orden"],
  ["second order", "best estimate", "2o", "zweiter ordnung", "segundo orden"],
  ["both sexes", "unisex", "sex independent", "sex_independent"],
  ["females", "female", "women", "woman", "mujer", "mujeres", "frauen", "f"],
  ["males", "male", "men", "man", "hombre", "hombres", "männer", "m"],
  ["select", "selection", "select ultimate"],
  ["improvement", "generational", "projection", "trend", "improving"],
  ["misprint", "misprints", "errata", "doubtful", "doubt"],
  ["synthetic", "invented", "dummy", "test"],
];
