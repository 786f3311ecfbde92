#include "GlobalBlock.h"

GlobalBlock Global;
