#include "Presentation/DashboardSeries.h"
