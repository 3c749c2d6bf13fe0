#include "player/Player.h"

#include "GStreamerPlayer.h"

std::unique_ptr<SINK_CORE_TransferService> PLAYER_CreatePlayer(const PLAYER_Options& options,
                                                               std::string* error) {
  auto player = std::make_unique<PLAYER_GStreamerPlayer>(options, nullptr, error);
  if (!player->Ready()) return nullptr;
  return player;
}
