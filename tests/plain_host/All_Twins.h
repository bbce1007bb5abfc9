/* A host in C: the addresses of all the twins that the list of functions names, so that a twin that the plain
 * header does not declare does not compile, and one that the library does not export does not link. */
#pragma once

int count_of_null_twins(void);
