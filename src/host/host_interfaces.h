#pragma once

/// The contract with the host, whole: what it calls on the module and what it offers.

#include "host/auxiliary.h"
#include "host/cab.h"
#include "host/file.h"
#include "host/file_cache.h"
#include "host/file_system.h"
#include "host/flag.h"
#include "host/instance.h"
#include "host/message_box.h"
#include "host/names_collection.h"
#include "host/plugin_interface.h"
#include "host/string.h"
#include "host/user_interface.h"
