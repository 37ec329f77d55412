#pragma once

#include "paired.h"

Comparison MaskedLine();
Comparison WrittenLine();
Comparison AdapterList();
