#pragma once

/// Marks what the platform library offers; all else stays inside it.
#define KOV_PLATFORM_API __attribute__((visibility("default")))
