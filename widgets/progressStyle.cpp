#include "widgets/progressStyle.h"
