#include "All_Twins.h"

#include <NeuropixAPI_plain.h>

typedef void (*any_function)(void);

static const any_function twins[] = {
#define NP_FUNCTION(result, name, parameters, arguments) (any_function) np_##name,
#define NP_ADDITION(result, name, parameters, arguments) (any_function) np_##name,
#include <NeuropixAPI_Functions.inc>
};

int count_of_null_twins(void) {
    int count = 0;
    size_t i = 0;
    for (; i < sizeof twins / sizeof twins[0]; ++i) {
        count += twins[i] == NULL;
    }
    return count;
}
