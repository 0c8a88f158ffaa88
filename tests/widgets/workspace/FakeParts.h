// Stand-ins for what the central window gets from elsewhere: views that only write down what they are told.
#pragma once

#include "UI/MainWindow/WorkspaceParts.h"

#include <QDialog>
#include <QLabel>
#include <string>
#include <vector>

namespace workspace {

using Told = std::vector<std::string>;

class FakeEditor : public QLabel, public CFeatureEditor {
public:
    FakeEditor(QWidget* parent, Told& told) : QLabel(parent), m_told(told) {}
    QWidget* Widget() override { return this; }
    void OnCameraOpen(long) override { m_told.push_back("editor open"); }
    void OnCameraClose(long) override { m_told.push_back("editor close"); }
    void OnCameraStartShot() override { m_told.push_back("editor start"); }
    void OnCameraStopShot() override { m_told.push_back("editor stop"); }
    void UpdateFeatures(int, const QString&) override { m_told.push_back("editor update"); }
    void LoadCamFeatures() override { m_told.push_back("editor load"); }
    void SaveCamFeatures() override { m_told.push_back("editor save"); }
    void OnOptionsChanged() override { m_told.push_back("editor options"); }

private:
    Told& m_told;
};

class FakeToolPanel : public CToolPanel {
public:
    FakeToolPanel(QWidget* parent, Told& told) : m_window(parent), m_told(told) {}
    QDialog* Window() override { return &m_window; }
    void SetCurCamera(long) override { m_told.push_back("panel camera"); }
    void UpdateCurrentPage() override { m_told.push_back("panel page"); }

private:
    QDialog m_window;
    Told& m_told;
};

// Every part; `told` must outlive the window.
inline _WORKSPACE_PARTS_ AllParts(Told& told) {
    _WORKSPACE_PARTS_ parts;
    parts.featureEditor = [&told](QWidget* parent) { return new FakeEditor(parent, told); };
    parts.toolPanel = [&told](QWidget* parent, const std::function<void()>&) {
        return new FakeToolPanel(parent, told);
    };
    parts.options = [&told](QWidget*, const _OPTIONS_CALL_& call, bool& accepted) {
        told.push_back(call.networkPage ? "options network" : "options");
        accepted = true;
        return true;
    };
    return parts;
}

} // namespace workspace
