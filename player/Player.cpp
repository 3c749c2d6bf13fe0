#include "player/Player.h"

#include "GStreamerPlayer.h"

std::unique_ptr<SINK_CORE_TransferService> PLAYER_CreatePlayer(const PLAYER_Options& options,
                                                               std::string* error, std::string* warning) {
  if (warning != nullptr) warning->clear();
  auto player = std::make_unique<PLAYER_GStreamerPlayer>(options, nullptr, error);
  if (!player->Ready()) return nullptr;
  if (warning != nullptr) {
    *warning = player->Warning();
  } else if (!player->Warning().empty()) {
    g_warning("%s", player->Warning().c_str());
  }
  return player;
}
