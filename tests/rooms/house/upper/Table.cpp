#include "upper/Table.h"

#include "lower/Floor.h"

int table_height() {
    return floor_height() + 1;
}
