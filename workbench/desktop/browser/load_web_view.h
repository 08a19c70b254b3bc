#pragma once

#include <string>
#include <vector>

#include "workbench/desktop/browser/browser_pane.h"
#include "workbench/desktop/browser/register_browser.h"

/// A view out of the browser's library, which is loaded by the first call and stays. What is missing is said in words; nothing
/// that would end the process is tried. Main thread.
LoadedWebView LoadWebView(const BrowserSettings& settings, WebViewListener listener, QWidget* parent);

/// The browser's own rules for names that are reached at another address; empty for none. What hasn't the shape
/// HOST:PORT:ADDRESS:PORT is left out; an IPv6 address stands in brackets.
std::string HostResolverRules(const std::vector<std::string>& connect_to);
