#include "consumer.c"
