// The data file: where it is written, the Browse button and the history viewer.

#include "base/platform.h"
#include "files/history_viewer.h"
#include "files/sample_file.h"
#include "frm_client.h"

#include <QFileInfo>

namespace torv {

void FrmClient::SaveSampleHistory() {
    SaveMemory2File(p_, dataFilePath(), 0, data_.blockCount, data_, trailerInfo(), &keptDataFile);
}

void FrmClient::cmdBrowse_Click() {
    const std::optional<QString> chosen =
        chooseDataFile(p_, paths.folder, f.txtHistFileName.caption);
    if (!chosen) return; // cancelled: nothing changes
    const QString bareName = QFileInfo(*chosen).fileName();
    paths.fullPath = *chosen;
    paths.folder = chosen->left(chosen->size() - bareName.size() - 1);
    f.txtHistFileName.caption = bareName;
}

void FrmClient::CmdShowGraph_Click() {
    // With no folder remembered the file name stands in for it (the viewer then finds the
    // file by the name it is given).
    if (paths.folder.isEmpty()) paths.folder = f.txtHistFileName.caption;
    if (const std::int64_t viewer = startHistoryViewer(p_, paths.folder, f.txtHistFileName.caption,
                                                       xMode, f.txtIntegration.caption))
        startedViewers.push_back(viewer);
}

QString FrmClient::dataFilePath() {
    // The writers keep to the remembered path: the first save remembers the text of the
    // box, and only Browse chooses another.
    if (paths.fullPath.isEmpty()) paths.fullPath = f.txtHistFileName.caption;
    return paths.fullPath;
}

TrailerInfo FrmClient::trailerInfo() const {
    return {f.txtIntegration.caption, f.lblUnitNameTare.caption, xMode};
}

} // namespace torv
