#include "state/variables.h"

SharedVariables shared;
