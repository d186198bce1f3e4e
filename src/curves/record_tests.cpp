#include "curves/record_tests.h"
