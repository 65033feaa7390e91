/* A workbook with a chart, in memory: for hosts in plain C that bring their own. */
#ifndef CHART_BOOK_H
#define CHART_BOOK_H

#include <stdint.h>

/* A BIFF5 workbook of one sheet with one chart: a pie of one series, with a title. */
static const uint8_t
    kChartBook[] =
        {
            0x09, 8,    8,  0,  0,    5,    0x05, 0,   0,    0,    0,    0,   /* BOF of the globals */
            0x85, 0,    8,  0,  28,   0,    0,    0,   0,    0,    1,    'S', /* BOUNDSHEET */
            0x0A, 0,    0,  0,                                                /* EOF */
            0x09, 8,    8,  0,  0,    5,    0x10, 0,   0,    0,    0,    0,   /* BOF of the sheet */
            0x09, 8,    8,  0,  0,    5,    0x20, 0,   0,    0,    0,    0,   /* BOF of the chart */
            0x02, 0x10, 16, 0,  0,    0,    0,    0,   0,    0,    0,    0,   0,    0,    100,
            0,    0,    0,  50, 0,                                          /* CHART, 100 by 50 points */
            0x33, 0x10, 0,  0,                                              /* BEGIN */
            0x03, 0x10, 8,  0,  1,    0,    1,    0,   7,    0,    7,    0, /* SERIES of 7 categories */
            0x33, 0x10, 0,  0,                                              /* BEGIN */
            0x0D, 0x10, 6,  0,  0,    0,    3,    'a', 'b',  'c',           /* SERIESTEXT */
            0x51, 0x10, 26, 0,  1,    2,    0,    0,   0,    0,    18,   0,   0x3A, 0xFF, 0xFF,
            0,    0,    0,  0,  0,    0,    0,    0,   0,    0,    0,    0,   2,    0,    3, /* AI */
            0x45, 0x10, 2,  0,  0,    0,                                                     /* SERTOCRT */
            0x34, 0x10, 0,  0,                                                               /* END */
            0x25, 0x10, 8,  0,  2,    2,    1,    0,   0x33, 0x22, 0x11, 0,                  /* TEXT */
            0x33, 0x10, 0,  0,                                                               /* BEGIN */
            0x26, 0x10, 2,  0,  5,    0,                                                     /* FONTX */
            0x27, 0x10, 6,  0,  1,    0,    0,    0,   0,    0,   /* OBJECTLINK to the chart */
            0x0D, 0x10, 6,  0,  0,    0,    3,    'T', 'o',  'p', /* SERIESTEXT */
            0x34, 0x10, 0,  0,                                    /* END */
            0x14, 0x10, 0,  0,  0x33, 0x10, 0,    0,              /* CHARTFORMAT, BEGIN */
            0x19, 0x10, 4,  0,  0,    0,    0,    0,              /* PIE */
            0x34, 0x10, 0,  0,  0x34, 0x10, 0,    0,              /* END, END */
            0x0A, 0,    0,  0,  0x0A, 0,    0,    0,              /* EOF of the chart and of the sheet */
            0xF8, 0xFE, 0,  0,                                    /* BUFEND */
};

#endif
