#pragma once

#include "paired.h"

Comparison MaskedLine();
Comparison WrittenLine();
Comparison AdapterList();
/// The routes of an adapter that has `count`.
Comparison AdapterRoutes(int count);
/// Whether a route of many takes the time of a route of few.
Comparison AdapterRoutesGrowth();
