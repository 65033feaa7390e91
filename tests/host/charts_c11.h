/* The part of the C11 host that reads charts. It ends the program with a sentence when something is not as it should be. */
#ifndef TOLVENAR_TESTS_CHARTS_C11_H
#define TOLVENAR_TESTS_CHARTS_C11_H

void CheckCharts(void);

#endif
