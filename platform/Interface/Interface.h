#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "Interface/EthDevPam.h"
#include "Interface/EthDevPamCollection.h"
#include "Interface/EthDevPamManager.h"
#include "Interface/IntfStatusDir.h"
#include "Interface/IntfStatusManager.h"
#include "Interface/PamDesiredIntfDir.h"
