#include "host/ServiceCatalogue.h"

#include <cstring>

#include "host/PublishedServices.h"
#include "host/ServiceCatalogueRows.h"

namespace {

std::vector<HOST_ServiceDescription> BuildCatalogue() {
  std::vector<HOST_ServiceDescription> services;
  services.push_back(HOST_DescribeAVTransport());
  services.push_back(HOST_DescribeConnectionManager());
  services.push_back(HOST_DescribeRenderingControl());
  services.push_back(HOST_DescribeProduct());
  services.push_back(HOST_DescribePlaylist());
  services.push_back(HOST_DescribeTime());
  services.push_back(HOST_DescribeInfo());
  services.push_back(HOST_DescribeVolume());
  services.push_back(HOST_DescribeSender());
  return services;
}

}  // namespace

const std::vector<HOST_ServiceDescription>& HOST_ServiceCatalogue() {
  static const std::vector<HOST_ServiceDescription> catalogue = BuildCatalogue();
  return catalogue;
}

const HOST_ServiceDescription* HOST_FindService(const char* serviceType) {
  if (serviceType == nullptr) return nullptr;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    if (std::strcmp(service.serviceType, serviceType) == 0) return &service;
  }
  return nullptr;
}

bool HOST_IsPublished(HOST_PublishedServices published, const char* serviceType) {
  if (serviceType == nullptr) return false;
  // The family shows in the type's domain: the UPnP forum's or OpenHome's.
  const bool openHome = std::strncmp(serviceType, "urn:av-openhome-org:", 20) == 0;
  switch (published) {
    case HOST_PublishedServices::Both:
      return true;
    case HOST_PublishedServices::AudioVideo:
      return !openHome;
    case HOST_PublishedServices::OpenHome:
      return openHome;
  }
  return false;
}

std::string HOST_ScpdFileName(const HOST_ServiceDescription& service) {
  return std::string("scpd/") + service.name + ".xml";
}

std::string HOST_ScpdUrl(const HOST_ServiceDescription& service) { return "/" + HOST_ScpdFileName(service); }

std::string HOST_ControlUrl(const HOST_ServiceDescription& service) {
  return std::string("/control/") + service.name;
}

std::string HOST_EventUrl(const HOST_ServiceDescription& service) {
  return std::string("/event/") + service.name;
}
