#include "AuriskSDK/Platform/BlueZ/BlueZCentral.h"

#include "AuriskSDK/Platform/BlueZ/BlueZRadio.h"

namespace aurisk::bluez {

namespace {

/// What the daemon tells where the adapter has told nothing.
constexpr int unknownRssi = 127;

} // namespace

std::shared_ptr<BlueZCentral> BlueZCentral::create(
    std::shared_ptr<BlueZRadio> radio, std::weak_ptr<CBCentralManagerDelegate> delegate)
{
    auto central = std::make_shared<BlueZCentral>(Key(), std::move(radio), std::move(delegate));
    DispatchQueue::main().async([weak = std::weak_ptr(central)] {
        const auto self = weak.lock();
        if (self && self->_state == CBManagerState::unknown && self->_radio->state() != CBManagerState::unknown)
            self->radioIs(self->_radio->state(), {}); // it has no connections yet
    });
    return central;
}

BlueZCentral::BlueZCentral(Key, std::shared_ptr<BlueZRadio> radio, std::weak_ptr<CBCentralManagerDelegate> delegate)
    : _radio(std::move(radio))
    , _delegate(std::move(delegate))
{
}

BlueZCentral::~BlueZCentral()
{
    for (const auto& [path, weak] : _peripherals)
        if (const auto peripheral = weak.lock())
            peripheral->abandon();
    if (_isScanning)
        _radio->scanDidChange(); // of which this one is no part any more
}

// State

void BlueZCentral::radioIs(CBManagerState state, const BluetoothError& lost)
{
    const auto self = weak_from_this();
    _state = state;
    tell(&CBCentralManagerDelegate::centralManagerDidUpdateState);
    if (self.expired())
        return;
    if (state == CBManagerState::poweredOn)
        return reportConnected();
    for (const auto& [path, weak] : std::map(_peripherals))
        if (const auto peripheral = weak.lock(); peripheral && !self.expired())
            peripheral->linkDidGo(lost);
    if (self.expired())
        return;
    std::erase_if(_peripherals, [](const auto& entry) { return entry.second.expired(); });
    _reported.clear();
}

// Scanning

void BlueZCentral::scanForPeripherals(const CBScanOptions& options)
{
    _isScanning = true;
    _allowDuplicates = options.allowDuplicates;
    _reported.clear();
    _radio->scanDidChange();
    DispatchQueue::main().async([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->reportConnected();
    });
}

void BlueZCentral::stopScan()
{
    _isScanning = false;
    _radio->scanDidChange();
}

/// Devices that somebody is connected to do not advertise: without this nobody would ever hear of them again.
void BlueZCentral::reportConnected()
{
    if (!_isScanning || _state != CBManagerState::poweredOn)
        return;
    const auto self = weak_from_this();
    for (const auto& path : _radio->objects().below(_radio->adapter(), interface::device)) {
        didConnect(path);
        if (self.expired())
            return;
    }
}

void BlueZCentral::didConnect(const std::string& devicePath)
{
    const auto known = knownAt(devicePath);
    const bool isOurs = known && known->state() != CBPeripheralState::disconnected;
    if (!isOurs && _radio->objects().isTrue(devicePath, interface::device, "Connected"))
        report(devicePath, std::nullopt);
}

void BlueZCentral::didHear(const std::string& devicePath)
{
    const auto* rssi = _radio->objects().property<std::int16_t>(devicePath, interface::device, "RSSI");
    const bool isKnown = rssi && *rssi != unknownRssi;
    report(devicePath, isKnown ? std::optional<int>(*rssi) : std::nullopt);
}

void BlueZCentral::report(const std::string& devicePath, std::optional<int> rssi)
{
    if (!_isScanning || _state != CBManagerState::poweredOn)
        return;
    if (!_reported.insert(devicePath).second && !_allowDuplicates)
        return;
    const auto peripheral = peripheralAt(devicePath);
    if (!peripheral)
        return;
    CBAdvertisementData advertisement{ .localName = peripheral->name() };
    const auto* companies = _radio->objects().property<CompanyData>(devicePath, interface::device, "ManufacturerData");
    if (companies && !companies->empty()) {
        const auto& [company, data] = *companies->begin();
        Data whole = { std::uint8_t(company & 0xFF), std::uint8_t(company >> 8) };
        whole.insert(whole.end(), data.begin(), data.end());
        advertisement.manufacturerData = std::move(whole);
    }
    tell(&CBCentralManagerDelegate::centralManagerDidDiscover, std::shared_ptr<CBPeripheral>(peripheral), advertisement,
        rssi);
}

std::shared_ptr<BlueZPeripheral> BlueZCentral::knownAt(const std::string& devicePath) const
{
    const auto found = _peripherals.find(devicePath);
    return found == _peripherals.end() ? nullptr : found->second.lock();
}

/// One and the same as long as anybody has it.
std::shared_ptr<BlueZPeripheral> BlueZCentral::peripheralAt(const std::string& devicePath)
{
    if (auto known = knownAt(devicePath))
        return known;
    const auto* address = _radio->objects().property<std::string>(devicePath, interface::device, "Address");
    if (!address)
        return nullptr;
    std::erase_if(_peripherals, [](const auto& entry) { return entry.second.expired(); });
    auto made = BlueZPeripheral::create(weak_from_this(), _radio, *address, devicePath);
    _peripherals.insert_or_assign(devicePath, made);
    return made;
}

// Connections

void BlueZCentral::connectPeripheral(const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (const auto one = mine(peripheral))
        return one->connect();
    DispatchQueue::main().async([weak = weak_from_this(), peripheral] {
        if (const auto self = weak.lock())
            self->tell(&CBCentralManagerDelegate::centralManagerDidFailToConnect, peripheral,
                MaybeError(bluezError(ErrorCode::foreignPeripheral, "Another central found this peripheral.")));
    });
}

void BlueZCentral::cancelPeripheralConnection(const std::shared_ptr<CBPeripheral>& peripheral)
{
    if (const auto one = mine(peripheral))
        one->cancel();
}

std::shared_ptr<BlueZPeripheral> BlueZCentral::mine(const std::shared_ptr<CBPeripheral>& peripheral) const
{
    for (const auto& [path, weak] : _peripherals)
        if (auto one = weak.lock(); one && one == peripheral)
            return one;
    return nullptr;
}

void BlueZCentral::linkDidGo(const std::string& devicePath)
{
    if (!_radio->objects().propertiesOf(devicePath, interface::device))
        _reported.erase(devicePath);
    if (const auto peripheral = knownAt(devicePath))
        peripheral->linkDidGo(bluezError(ErrorCode::linkLost, "The link to " + peripheral->label() + " was lost."));
    else
        _peripherals.erase(devicePath);
}

void BlueZCentral::valueDidChange(const std::string& devicePath, const std::string& path, const Data& value)
{
    if (const auto peripheral = knownAt(devicePath))
        peripheral->valueDidChange(path, value);
}

void BlueZCentral::batteryDidChange(const std::string& devicePath)
{
    if (const auto peripheral = knownAt(devicePath))
        peripheral->batteryDidChange();
}

void BlueZCentral::objectDidVanish(const std::string& devicePath, const std::string& path)
{
    if (const auto peripheral = knownAt(devicePath))
        peripheral->objectDidVanish(path);
}

} // namespace aurisk::bluez
