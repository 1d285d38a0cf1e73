// The media names of the settings, letter by letter as drivers send them and devices offer them.
#ifndef TVRSCN_TESTS_SUPPORT_MEDIA_NAMES_H
#define TVRSCN_TESTS_SUPPORT_MEDIA_NAMES_H

namespace tvrscn::test {

inline constexpr const char* kMediaNames[] = {"Auto",
                                              "Mixed",
                                              "NA_8.5x11LEF",
                                              "NA_8.5x11SEF",
                                              "NA_8.5x14SEF",
                                              "NA_5.5x8.5LEF",
                                              "NA_5.5x8.5SEF",
                                              "NA_8.5x13SEF",
                                              "NA_8.5x13.4SEF",
                                              "NA_11x17SEF",
                                              "ISO_A5LEF",
                                              "ISO_A5SEF",
                                              "ISO_A4LEF",
                                              "ISO_A4SEF",
                                              "ISO_A3SEF",
                                              "ISO_B5SEF",
                                              "ISO_B5LEF",
                                              "ISO_B4SEF",
                                              "JIS_B6SEF",
                                              "JIS_B6LEF",
                                              "JIS_B5LEF",
                                              "JIS_B5SEF",
                                              "JIS_B4SEF",
                                              "NA_7.25x10.5LEF",
                                              "NA_7.25x10.5SEF",
                                              "NA_5.5x7LEF",
                                              "NA_5.5x7SEF",
                                              "NA_5x7SEF",
                                              "NA_6x9SEF",
                                              "ISO_A6SEF",
                                              "ISO_C6_ENVELOPE_C6",
                                              "ISO_C5_ENVELOPE_C5",
                                              "NA-3.875X7.5-ENVELOPE-MONARCH",
                                              "NA-NUMBER-10-ENVELOPE",
                                              "ISO-DESIGNATED-LONG-ENVELOPE-DL",
                                              "NA_8x10LEF",
                                              "NA_8x10SEF",
                                              "NA_215x315SEF",
                                              "NA_9x11SEF",
                                              "NA_11x15SEF",
                                              "NA_3.5x5.5SEF",
                                              "NA_4x6LEF",
                                              "NA_4x6SEF",
                                              "NA_4.25x5.5SEF",
                                              "NA_216x343SEF",
                                              "CN_270x390SEF",
                                              "CN_195x270LEF"};

}  // namespace tvrscn::test

#endif  // TVRSCN_TESTS_SUPPORT_MEDIA_NAMES_H
