#include "curves/record_panel.h"
