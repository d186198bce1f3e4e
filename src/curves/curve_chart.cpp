#include "curves/curve_chart.h"
