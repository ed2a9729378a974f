// Installation, in preparation.
#include "SoftwareUpdateClient.h"

namespace qv {

void SoftwareUpdateClient::installPackage(int) { }
void SoftwareUpdateClient::downloadProgress(int, int) { }
void SoftwareUpdateClient::downloadFinished() { }
void SoftwareUpdateClient::downloadError(int) { }
void SoftwareUpdateClient::abortDownload() { }
void SoftwareUpdateClient::deleteProgressDialog() { }
void SoftwareUpdateClient::startZipInstall() { }
void SoftwareUpdateClient::unzippedMPKGPackage(const QString &) { }

} // namespace qv
