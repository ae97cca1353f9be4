// All records that selectors pass between host and importer, by subject in the headers below.

#pragma once

#include "host/record_values.h"
#include "host/records_analysis.h"
#include "host/records_async.h"
#include "host/records_audio.h"
#include "host/records_file.h"
#include "host/records_plugin.h"
#include "host/records_video.h"
