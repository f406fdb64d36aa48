#include "tools/host/carlist.h"

#include <algorithm>

namespace rataip::host {

using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;

namespace {

bool hasSameNames(const CarInfo& left, const CarInfo& right) {
    return left.driverName() == right.driverName() && left.teamName() == right.teamName() &&
           left.carName() == right.carName() && left.className() == right.className();
}

bool isOnTrack(CarStatus status) {
    return status == CarStatus::OutLap || status == CarStatus::FlyingLap ||
           status == CarStatus::OnTrack || status == CarStatus::OffTrack;
}

bool isInPits(CarStatus status) {
    return status == CarStatus::InPitlane || status == CarStatus::InPitStall;
}

}  // namespace

QList<CarInfo> CarList::update(const TLM::SDK::LivePluginInfo& info) {
    QList<CarInfo> news;
    QMap<QString, CarInfo> cars;
    for (const CarInfo& car : info.cars) {
        if (car.driverName().isEmpty()) {
            continue;
        }
        const auto known = m_cars.constFind(car.carId());
        if (known == m_cars.cend() || !hasSameNames(*known, car)) {
            news.append(car);
        }
        cars.insert(car.carId(), car);
    }
    m_cars = cars;
    return news;
}

qsizetype CarList::countOnTrack() const {
    return std::count_if(m_cars.cbegin(), m_cars.cend(),
                         [](const CarInfo& car) { return isOnTrack(car.status()); });
}

qsizetype CarList::countInPits() const {
    return std::count_if(m_cars.cbegin(), m_cars.cend(),
                         [](const CarInfo& car) { return isInPits(car.status()); });
}

}  // namespace rataip::host
