// What the plug-in tells the host about itself, and the only symbol that it exports.

#include <iterator>

#include "plugin/host_services.h"
#include "plugin/iq_processor.h"
#include "plugin/panel.h"
#include "wendle_plugin.h"

namespace pelagrim {

namespace {

constexpr char kName[] = "Pelagrim";

const WendleIqApi kIqApi = {
    .struct_size = sizeof(WendleIqApi),
    .reserved = 0,
    .rate_hz = 2400000.0,
    .create = iq_create,
    .process = iq_process,
    .retune = iq_retune,
    .poll_text = iq_poll_text,
    .destroy = iq_destroy,
};

const WendlePanelApi kPanelApi = {
    .struct_size = sizeof(WendlePanelApi),
    .title = kName,
    .create = pn_create,
    .columns = pn_columns,
    .poll_rows = pn_poll_rows,
    .destroy = pn_destroy,
};

const WendleHostClientApi kHostClientApi = {
    .struct_size = sizeof(WendleHostClientApi),
    .attach = hc_attach,
};

const WendleCapability kCapabilities[] = {
    {kIqProcessor, sizeof kIqApi, &kIqApi},
    {kPanel, sizeof kPanelApi, &kPanelApi},
    {kHostClient, sizeof kHostClientApi, &kHostClientApi},
};

const WendlePluginDesc kDesc = {
    .struct_size = sizeof(WendlePluginDesc),
    .abi_version = WENDLE_ABI_VERSION,
    .plugin_name = kName,
    .version = "0.1.1",
    .author = "Orvane project",
    .license = "MIT",
    .capability_mask = kIqProcessor | kPanel | kHostClient,
    .capability_count = std::size(kCapabilities),
    .capabilities = kCapabilities,
};

}  // namespace

}  // namespace pelagrim

extern "C" __attribute__((visibility("default"))) const WendlePluginDesc* wendle_plugin_query(
    uint32_t abi_version) noexcept {
  return abi_version == WENDLE_ABI_VERSION ? &pelagrim::kDesc : nullptr;
}
