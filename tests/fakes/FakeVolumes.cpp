#include "FakeVolumes.h"
