#pragma once

namespace aidl::vendor::tavix::tps {

// Picture mode, persisted as one digit so it survives a restart of the service.
inline constexpr char kModeProperty[] = "persist.vendor.tavixp.mode";

// Event strings sent to clients through ITpsCallback::onTavixNotification.
inline constexpr char kEventRenderStart[] = "Callback_TavixRenderStart";
inline constexpr char kEventRenderStop[] = "Callback_TavixRenderStop";
inline constexpr char kEventLogoStart[] = "Callback_TavixLogoStart";
inline constexpr char kEventLogoStop[] = "Callback_TavixLogoStop";

}  // namespace aidl::vendor::tavix::tps
