#ifndef FAULTKEEPER_IDENTIFIERS_H
#define FAULTKEEPER_IDENTIFIERS_H

#include <Faultkeeper/Export.h>

#include <string>
#include <utility>

/// The coordinates that name every fault, their numbers, and their spelling in configuration files.
///
/// A fault is identified by two ints: its *problem code*, module | sub-module | problem (bits 16-23, 8-15
/// and 0-7, which never overlap), and its *problem type*, the failure mode. Example: Positioning (0x40000),
/// GPS (0xC00), No Data (0x1B) make the code 0x40C1B; with failure mode 2 the identifier is (0x40C1B, 2).
///
/// Threads: everything here is free of state and may be called from any thread.
/// Failure: nothing fails loudly. A name that is not known translates to -1 (a failure mode to 21), a value
/// that is not known to the empty string.
namespace Faultkeeper
{

/// The part of the console that reports a fault: n << 16. Append only: configuration files and recorded
/// tables rely on the numbers.
enum EModuleIdentifier : int
{
    emiUnknown = -1,
    emiGPS = 0x10000,
    emiCAN = 0x20000,
    emiNavigationAndControl = 0x30000,
    emiPositioning = 0x40000,
    emiService = 0x50000,
    emiBaseRadio = 0x60000,
    emiBase = 0x70000,
    emiAudio = 0x80000,
    emiCellRadio = 0x90000,
    emiSystem = 0xA0000,
    emiNMEA = 0xB0000,
    emiNTrip = 0xC0000,
};

/// The device or function inside the module: n << 8. Append only.
enum ESubModuleIdentifier : int
{
    esmiUnknown = -1,
    esmiAccelerometers = 0x0100,
    esmiBattery = 0x0200,
    esmiBus = 0x0300,
    esmiCAL = 0x0400,
    esmiCAN = 0x0500,
    esmiCDMA = 0x0600,
    esmiCommunications = 0x0700,
    esmiController = 0x0800,
    esmiDMI = 0x0900,
    esmiEngage = 0x0A00,
    esmiFieldOffset = 0x0B00,
    esmiGPS = 0x0C00,
    esmiGSM = 0x0D00,
    esmiGUI = 0x0E00,
    esmiGyroAccel = 0x0F00,
    esmiGyros = 0x1000,
    esmiImplementOffset = 0x1100,
    esmiImplementWidth = 0x1200,
    esmiIMU = 0x1300,
    esmiTessel = 0x1400,
    esmiL1Antenna = 0x1500,
    esmiL1L2Antenna = 0x1600,
    esmiLine = 0x1700,
    esmiLogServer = 0x1800,
    esmiMagnetometer = 0x1900,
    esmiMaxstream = 0x1A00,
    esmiPelk = 0x1B00,
    esmiVantor2 = 0x1C00,
    esmiCorvex = 0x1D00,
    esmiNavigation = 0x1E00,
    esmiNone = 0x1F00,
    esmiOperation = 0x2000,
    esmiPosition = 0x2100,
    esmiPPPDServer = 0x2200,
    esmiSensitivity = 0x2300,
    esmiService = 0x2400,
    esmiSPI = 0x2500,
    esmiSteering = 0x2600,
    esmiSysmon = 0x2700,
    esmiUblox = 0x2800,
    esmiWaypoints = 0x2900,
    esmiXAccel = 0x2A00,
    esmiXGyro = 0x2B00,
    esmiYAccel = 0x2C00,
    esmiYGyro = 0x2D00,
    esmiZAccel = 0x2E00,
    esmiZGyro = 0x2F00,
    esmiOstrel = 0x3000,
    esmiHSDPA = 0x3100,
    esmiTemperatureCalibration = 0x3200,
    esmiNudge = 0x3300,
    esmiNetworkRTK = 0x3400,
    esmiSecondaryGPS = 0x3500,
    esmiTreatments = 0x3600,
};

/// What is wrong, 1..95. The values 59, 63 to 66 and 73 are not assigned. Append only.
enum EProblemIdentifier : int
{
    epiUnknown = -1,
    epiANotSet = 1,
    epiAntennaSeparation = 2,
    epiAuthenticationFailed = 3,
    epiBNotSet = 4,
    epiCalibration = 5,
    epiCannotOpen = 6,
    epiChecksum = 7,
    epiCommandsFailing = 8,
    epiCommunications = 9,
    epiConnection = 10,
    epiCrash = 11,
    epiData = 12,
    epiDisengageFault = 13,
    epiDistance = 14,
    epiEngageFault = 15,
    epiFraming = 16,
    epiHeading = 17,
    epiI2CError = 18,
    epiIncorrectAPN = 19,
    epiIncorrectCount = 20,
    epiIncorrectPIN = 21,
    epiInitialisation = 22,
    epiKernelError = 23,
    epiL1Jammed = 24,
    epiL2Jammed = 25,
    epiMovementDetected = 26,
    epiNoData = 27,
    epiNoNetwork = 28,
    epiNoSIM = 29,
    epiNoType = 30,
    epiNullLogStatus = 31,
    epiNullMessage = 32,
    epiOrbitDownload = 33,
    epiOrientation = 34,
    epiPINMissing = 35,
    epiPortError = 36,
    epiPositionCalculation = 37,
    epiPower = 38,
    epiPPPDCrash = 39,
    epiProcessingFailure = 40,
    epiProvisioning = 41,
    epiReverse = 42,
    epiScreenshotFailed = 43,
    epiSettings = 44,
    epiSpeed = 45,
    epiSteering = 46,
    epiTemperature = 47,
    epiTerminalCrash = 48,
    epiTwoBases = 49,
    epiUnableToSetA = 50,
    epiUnableToSetB = 51,
    epiUnknownCrash = 52,
    epiUnknownError = 53,
    epiUnknownKey = 54,
    epiUnknownType = 55,
    epiUsableSatellites = 56,
    epiVoltage = 57,
    epiNotSet = 58,
    epiActivityConfirmation = 60,
    epiCalibrationLost = 61,
    epiNoSteeringSettings = 62,
    epiSteeringWasOverriden = 67,
    epiAttentionRequired = 68,
    epiDirectionMismatch = 69,
    epiSteeringWASData = 70,
    epiUnableToResolveHost = 71,
    epiHeadingNotSet = 72,
    epiInvalidAttachedDeviceID = 74,
    epiLagExceeded = 75,
    epiRSSILow = 76,
    epiTCPIPDisconnected = 77,
    epiTCPIPLowSpeed = 78,
    epiRTKLag = 79,
    epiNTripLowRSSI = 80,
    epiTCPIPTimeout = 81,
    epiGlideConfirmation = 82,
    epiFreeSpace = 83,
    epiFirmwareVersion = 84,
    epiReverseTimeout = 85,
    epiUnableToSetC = 86,
    epiRadius = 87,
    epiWaypoints = 88,
    epiNudgeLimit = 89,
    epiConfiguringController = 90,
    epiCPUThrashing = 91,
    epiVantorRTK = 92,
    epiBeyondTreatmentRangeLimit = 93,
    epiTreatmentDeviceError = 94,
    epiABCurveDefinition = 95,
};

/// How it fails. 0..19 are the failure mode identifiers (FMI) of SAE J1939-73 with the same numbers, 20 is
/// this system's own, 21 stands for a failure mode that is not known.
enum EProblemType : int
{
    eptDataValidButAboveOperatingRangeSevere = 0,
    eptDataValidButBelowOperatingRangeSevere = 1,
    eptDataErraticAndIntermittentlyIncorrect = 2,
    eptVoltageAboveNormalOrShortedHigh = 3,
    eptVoltageBelowNormalOrShortedLow = 4,
    eptCurrentBelowNormalOrOpenCircuit = 5,
    eptCurrentAboveNormalOrShortedGround = 6,
    eptMechanicalSystemNotRespondingOrNeedsAdjustment = 7,
    eptAbnormalFrequencyOrPulseWidthOrPeriod = 8,
    eptAbnormalUpdateRate = 9,
    eptAbnormalRateOfChange = 10,
    eptRootCauseUnknown = 11,
    eptBadIntelligentDeviceOrComponent = 12,
    eptOutOfCalibration = 13,
    eptSpecialInstructions = 14,
    eptDataValidButAboveOperatingRangeMinor = 15,
    eptDataValidButAboveOperatingRangeModerate = 16,
    eptDataValidButBelowOperatingRangeMinor = 17,
    eptDataValidButBelowOperatingRangeModerate = 18,
    eptReceivedNetworkDataInError = 19,
    eptDataCollectionTimeout = 20,
    eptUnknown = 21,
};

/// How bad it is.
enum EErrorSeverity : int
{
    eesUnknown = -1,
    eesLow = 0,
    eesMedium = 1,
    eesHigh = 2,
    eesCritical = 3,
};

/// Name of a module, or "". Bits below 16 are ignored, so a whole problem code gives its module's name.
FAULTKEEPER_EXPORT std::string TranslateModuleId(EModuleIdentifier id);
/// Module with exactly this name (case matters), or emiUnknown.
FAULTKEEPER_EXPORT EModuleIdentifier TranslateModuleId(const std::string& name);

/// Name of a sub-module, or "". Bits below 8 are ignored; module bits are not, so pass
/// CError::SubModuleId() and not the whole problem code, which gives "".
FAULTKEEPER_EXPORT std::string TranslateSubModuleId(ESubModuleIdentifier id);
/// Sub-module with exactly this name (case matters), or esmiUnknown.
FAULTKEEPER_EXPORT ESubModuleIdentifier TranslateSubModuleId(const std::string& name);

/// Name of a problem, or "" (also for the values that are not assigned).
FAULTKEEPER_EXPORT std::string TranslateProblemId(EProblemIdentifier id);
/// Problem with exactly this name (case matters), or epiUnknown.
FAULTKEEPER_EXPORT EProblemIdentifier TranslateProblemId(const std::string& name);

/// Name of a failure mode 0..20, or "".
FAULTKEEPER_EXPORT std::string TranslateProblemType(EProblemType type);
/// Failure mode with exactly this name; otherwise the decimal number that the text starts with, if that is
/// 0..20 (leading white space is skipped, text behind the number is ignored); otherwise eptUnknown.
FAULTKEEPER_EXPORT EProblemType TranslateProblemType(const std::string& nameOrNumber);

/// Name of a severity 0..3, or "".
FAULTKEEPER_EXPORT std::string TranslateSeverity(EErrorSeverity severity);
/// Severity with exactly this name (case matters), or eesUnknown.
FAULTKEEPER_EXPORT EErrorSeverity TranslateSeverity(const std::string& name);

/// Prints every name that configuration files may use to standard output, one a line, in table order:
/// "MODULE,name", "SUBMODULE,name", "PROBLEM,name" and "FMI,number,name " (with a blank at its end).
FAULTKEEPER_EXPORT void DumpXMLSymbols();

/// Orders identifiers by problem code, then by problem type, both as signed ints: the order in which every
/// listing shows them.
struct FAULTKEEPER_EXPORT SErrorIDComparer
{
    /// Does `left` come before `right`?
    bool operator()(const std::pair<int, int>& left, const std::pair<int, int>& right) const
    {
        return left.first != right.first ? left.first < right.first : left.second < right.second;
    }
};

} // namespace Faultkeeper

#endif
