#pragma once

#include <QWidget>

#include <memory>

class QMovie;
struct SandGlassForm;

// The busy indicator: the animated sand glass, 33 x 33, frameless, started at once.
class SandGlass : public QWidget
{
    Q_OBJECT

public:
    explicit SandGlass(QWidget *parent = nullptr);
    ~SandGlass() override;

protected:
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<SandGlassForm> ui;
    QMovie *m_movie = nullptr;
};
