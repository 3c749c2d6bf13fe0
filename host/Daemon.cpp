#include "Daemon.h"

#include <glib-unix.h>
#include <glib.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <memory>

#include "AtomicFile.h"
#include "AudioOutputChoice.h"
#include "Configuration.h"
#include "DeviceDescriptionWriter.h"
#include "GLibClock.h"
#include "Log.h"
#include "ModeratedEvents.h"
#include "Network.h"
#include "ProductSheet.h"
#include "Renderer.h"
#include "ServiceCatalogue.h"
#include "ServiceRegistry.h"
#include "StatusPage.h"
#include "XmlErrorLog.h"
#include "marlo/Properties.h"
#include "player/Player.h"
#include "sink_core/TransferService.h"

namespace {

// The document root must hold what the description points at; without the SCPDs no control point could
// use the device, so better to say so at once than to be found and fail.
bool CheckDocumentRoot(const std::string& documentRoot) {
  std::error_code error;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    const std::filesystem::path scpd = std::filesystem::path(documentRoot) / HOST_ScpdUrl(service).substr(1);
    if (!std::filesystem::is_regular_file(scpd, error)) {
      HOST_Log(HOST_LogLevel::Error, "the document root %s lacks %s (set it with --docroot)", documentRoot.c_str(),
               scpd.c_str());
      return false;
    }
  }
  return true;
}

bool WriteDescription(const HOST_Settings& settings, const std::string& udn, const std::string& path) {
  HOST_DeviceIdentity identity;
  identity.friendlyName = settings.friendlyName;
  identity.udn = udn;
  identity.presentationUrl = HOST_kStatusPagePath;
  const std::string text = HOST_WriteDeviceDescription(identity, settings.publishedServices);
  GError* error = nullptr;
  if (!g_file_set_contents(path.c_str(), text.c_str(), static_cast<gssize>(text.size()), &error)) {
    HOST_Log(HOST_LogLevel::Error, "could not write the device description: %s", error->message);
    g_error_free(error);
    return false;
  }
  return true;
}

// Every connection holds a descriptor, and the HTTP server of libsoup 3.2 keeps the descriptor of a
// keep-alive connection that its client closed while idle for as long as the process runs. The usual soft
// limit of 1024 would let a few hundred such clients stop the daemon from accepting connections; the hard
// limit is the most the system allows us.
void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) return;
  const rlim_t before = limit.rlim_cur;
  limit.rlim_cur = limit.rlim_max;
  if (setrlimit(RLIMIT_NOFILE, &limit) == 0)
    HOST_Log(HOST_LogLevel::Debug, "open files: up to %llu (was %llu)", static_cast<unsigned long long>(limit.rlim_cur),
             static_cast<unsigned long long>(before));
}

// The OpenHome object reads its product sheet (openhome.xml) below the directory "device.docroot" names.
// It gets the daemon's copy of the shipped sheet with the configured room and name, in the state
// directory; should that fail, the shipped sheet as it is, which only costs the names.
void HandOverProductSheet(const HOST_Settings& settings, const std::string& directory,
                          marlo::Properties* serviceProperties) {
  const std::string shipped = (std::filesystem::path(settings.docroot) / "openhome.xml").string();
  gchar* contents = nullptr;
  gsize length = 0;
  std::string sheet;
  if (g_file_get_contents(shipped.c_str(), &contents, &length, nullptr)) sheet.assign(contents, length);
  g_free(contents);
  std::string problem;
  const std::string text = HOST_ProductSheet(sheet, {settings.productRoom, settings.productName}, &problem);
  if (!problem.empty())
    HOST_Log(HOST_LogLevel::Warning, "the product sheet %s: %s; OpenHome control points see only the room and name",
             shipped.c_str(), problem.c_str());
  std::string error;
  if (text.empty() || g_mkdir_with_parents(directory.c_str(), 0700) != 0 ||
      !HOST_ReplaceFile((std::filesystem::path(directory) / "openhome.xml").string(), text, &error)) {
    HOST_Log(HOST_LogLevel::Warning, "could not write the product sheet with the room and name: %s",
             error.empty() ? directory.c_str() : error.c_str());
    return;
  }
  if (serviceProperties->SetProperty("device.docroot", directory.c_str()) != 0)
    HOST_Log(HOST_LogLevel::Warning, "no memory to hand over the product sheet");
}

gboolean Quit(gpointer loop) {
  HOST_Log(HOST_LogLevel::Info, "stopping");
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_CONTINUE;
}

}  // namespace

int HOST_RunDaemon(const HOST_Settings& settings, const std::string& udn, marlo::Properties* serviceProperties) {
  HOST_RouteXmlErrorsToLog();
  RaiseDescriptorLimit();
  if (!CheckDocumentRoot(settings.docroot)) return 1;
  const std::string descriptionPath =
      (std::filesystem::absolute(settings.stateDirectory) / "description.xml").string();
  if (!WriteDescription(settings, udn, descriptionPath)) return 1;

  const HOST_AudioOutputChoice audio = HOST_ChooseAudioOutput(settings.audioOutput, settings.audioDevice);
  HOST_Log(HOST_LogLevel::Info, "%s", audio.why.c_str());
  PLAYER_Options playerOptions;
  playerOptions.output = audio.output;
  playerOptions.device = audio.device;
  // A mixer control is used only with its device: the control's name has a default, the device not.
  if (!settings.mixerDevice.empty()) {
    playerOptions.mixerDevice = settings.mixerDevice;
    playerOptions.mixerControl = settings.mixerControl;
  }
  std::string error;
  std::string warning;
  std::unique_ptr<SINK_CORE_TransferService> player = PLAYER_CreatePlayer(playerOptions, &error, &warning);
  if (player == nullptr) {
    HOST_Log(HOST_LogLevel::Error, "could not create the player: %s", error.c_str());
    return 1;
  }
  if (!warning.empty()) HOST_Log(HOST_LogLevel::Warning, "%s", warning.c_str());
  if (!playerOptions.mixerDevice.empty() && warning.empty())
    HOST_Log(HOST_LogLevel::Info, "volume: the mixer control %s on %s", playerOptions.mixerControl.c_str(),
             playerOptions.mixerDevice.c_str());

  GMainContext* context = g_main_context_default();
  GMainLoop* loop = g_main_loop_new(context, FALSE);
  HOST_ServiceRegistry registry;
  PLAYER_GLibClock eventClock(context);
  HOST_ModeratedEvents events(&registry, &eventClock);
  HOST_Renderer renderer(player.get(), &events, context, {settings.volumeLimit, settings.startupVolume});
  // Named after the device, so that the renderers of two configurations sharing a state directory each
  // keep their own playlist and product sheet, and a device keeps its playlist as long as it keeps its UDN.
  const std::string uuid = udn.rfind("uuid:", 0) == 0 ? udn.substr(5) : udn;
  const std::filesystem::path state = std::filesystem::absolute(settings.stateDirectory);
  renderer.KeepPlaylist((state / ("playlist-" + uuid + ".xml")).string());
  HandOverProductSheet(settings, (state / ("product-" + uuid)).string(), serviceProperties);
  HOST_StepFailure failure;
  int status = 0;

  if (renderer.Prepare(serviceProperties, &failure)) {
    HOST_StatusPage statusPage(&renderer, HOST_StatusConfiguration(settings, audio, *serviceProperties),
                               settings.docroot);
    HOST_NetworkOptions networkOptions{settings.interfaceName, settings.port, descriptionPath, settings.docroot,
                                       settings.publishedServices};
    HOST_Network network(networkOptions, &renderer.Router(), &registry, [&](const std::string& address) {
      if (renderer.Start(address, &failure)) return true;
      g_main_loop_quit(loop);
      return false;
    });
    network.OnEachContext([&statusPage](GUPnPContext* published) { statusPage.Attach(published); });
    const guint interruptWatch = g_unix_signal_add(SIGINT, Quit, loop);
    const guint terminateWatch = g_unix_signal_add(SIGTERM, Quit, loop);
    HOST_Log(HOST_LogLevel::Info, "%s starting as %s", settings.friendlyName.c_str(), udn.c_str());
    network.Start();
    g_main_loop_run(loop);
    g_source_remove(interruptWatch);
    g_source_remove(terminateWatch);
    network.GoOffline();
    if (!renderer.Shutdown(&failure)) status = 1;
    events.Flush();
    network.Stop();
  }
  if (!failure.step.empty()) status = 1;
  renderer.Shutdown(nullptr);
  player.reset();
  g_main_loop_unref(loop);
  HOST_Log(status == 0 ? HOST_LogLevel::Info : HOST_LogLevel::Error, "stopped%s", status == 0 ? "" : " after a failure");
  return status;
}
