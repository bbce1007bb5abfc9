#include "lower/Floor.h"

int floor_height() {
    return 0;
}
