#include "tests/sharing/sharetest.h"
