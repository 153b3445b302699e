"""The JFR register collector of the collector model."""

from modelvalues import (CLASS, JFR_SKIPPED, L3_CACHE, L3_CACHE_DESC, MEM_CTL, MEM_CTL_DESC, NO_DATA_TEXT, PCI_BRIDGE,
                         PCI_BRIDGE_DESC, TABS, TvelException, VO_MEM_CTL, VO_MEM_CTL_DESC, array_value,
                         datetime_value, deref, int_value, string_value)
from modelhost import PlacedMap, dump


class NovRequest:
    """The dot-command transport; discovers the service processors when constructed."""

    def __init__(self, host):
        self.log = host.log
        self.sp = host.sp
        self.sp_instances = 0
        if not self.sp.is_dot_command():
            self.log.debug("TNOVRequestTorgaReg()::Is not Dotcommand.")
            return
        self.log.debug("TNOVRequestTorgaReg()::Is Dotcommand.")
        if not self.sp.check_sp_comm():
            self.log.debug("TNOVRequestTorgaReg()::SPComm check failed.")
            return
        self.sp_instances = self.sp.discover_sps() & 0xFF

    def send_command(self, buffer, index):
        """Fetches a service processor's block into the buffer; returns the length."""
        length = 0
        if not self.sp.is_dot_command():
            self.log.debug(NO_DATA_TEXT)
            return 0
        ok, block = self.sp.send_dot_command(index)
        if block is not None:
            length = len(block)
            buffer[:length] = block
        self.log.verbose("sendCommand CmdStatus return %dwith a returnDataLen of %d" % (ok, length))
        if not ok:
            self.log.debug(NO_DATA_TEXT)
        return length


class JfrErrorData:
    """The collector of the JFR chipset classes."""

    BLOCK_SIZE = 4096
    SECOND_COPY = 2040
    FILL = 48
    DESCRIPTIONS = {PCI_BRIDGE: PCI_BRIDGE_DESC, MEM_CTL: MEM_CTL_DESC,
                    VO_MEM_CTL: VO_MEM_CTL_DESC, L3_CACHE: L3_CACHE_DESC}

    def __init__(self, host, base, requested):
        self.host = host
        self.log = host.log
        self.base = base
        self.requested = requested
        self.time_stamp_from_second_copy = False
        self.transport = NovRequest(host)

    # -- instances ---------------------------------------------------------------------------------------

    def get_data(self):
        result = []
        try:
            count = deref(self.host.class_qualifier(self.requested, "MaxInstanceCount")).to_unsigned(16)
            self.log.debug("Class supports %d instances on this machine" % count)
            self.log.debug("fSPInstances = %d." % self.transport.sp_instances)
            for index in range(self.transport.sp_instances):
                self.collect_service_processor(index, count, result)
        except TvelException as error:
            self.log.debug("Encountered exception %s during%sthe collection of register data." % (error, TABS))
        return result

    def collect_service_processor(self, index, count, result):
        buffer = bytearray([self.FILL]) * self.BLOCK_SIZE
        length = self.transport.send_command(buffer, index) & 0xFFFF
        if length == 0:
            self.log.debug("Unable to retrieve engineering information.")
            self.log.verbose("")
            return
        self.log.debug("Returned Data:\n")
        self.log.debug(dump(buffer + b"\0", min(length, self.BLOCK_SIZE)))
        for instance in range(count):
            try:
                info = PlacedMap(self.get_cim_instance_info(self.base, 0), (index, instance))
                for name, value in self.get_chip_error_info(buffer, instance).items():
                    info.setdefault(name, value)
                result.append(info)
            except TvelException as error:
                self.log.debug("Unable to create chip instance due to caught exception %s" % error)
                result.clear()
                if error.status == 21:
                    break

    def get_cim_instance_info(self, cls, number):
        self.log.verbose("In getCIMInstanceInfo()")
        element_name = "%s,%d" % (self.DESCRIPTIONS.get(cls.name, ""), number)
        machine_type = self.host.machine_type
        instance_id = "KROSG:%s:%s:%d" % (cls.name, machine_type, number)
        self.log.verbose("chipDesc | instancdID = " + element_name + " | " + instance_id)
        info = {"InstanceID": string_value(instance_id), "ElementName": string_value(element_name),
                "MachineType": string_value(machine_type)}
        self.log.verbose("Completed getCIMInstanceInfo()")
        return info

    # -- registers ---------------------------------------------------------------------------------------

    def get_chip_error_info(self, data, instance):
        timestamp = self.get_time_stamp(data)
        values = self.get_chipset_error_register_values(data, instance)
        values.setdefault("StatisticTime", timestamp)
        return values

    def get_time_stamp(self, data):
        for copy in (0, 1):
            p = data[copy * self.SECOND_COPY:]
            self.time_stamp_from_second_copy = copy != 0
            self.log.debug("TimeStamp rawdata: \n")
            self.log.debug(dump(p, 7))
            if p[2] != 0 and p[3] != 0:
                return datetime_value(p[1] + 2000, p[2], p[3], p[4], p[5], p[6], 0)
        raise TvelException(21)

    def get_chipset_error_register_values(self, data, instance):
        self.log.verbose("In getChipsetErrorRegisterValues()")
        values = {}
        superclass = self.host.schema.parent(self.requested)
        for declaration in self.host.schema.property_declarations(self.requested):
            parent = deref(superclass, CLASS).name
            self.log.verbose("propertyDecl = " + declaration.name + ". classOrigin = " + declaration.origin
                             + ". superClass = " + parent)
            if declaration.origin in (self.requested.name, parent) and declaration.name not in JFR_SKIPPED:
                values[declaration.name] = self.get_register_data(declaration, data, instance)
        self.log.verbose("Completed getChipsetErrorRegisterValues()")
        return values

    def get_register_data(self, declaration, data, instance):
        index = deref(declaration.qualifier("Index")).to_unsigned(16)
        base = 0 if self.time_stamp_from_second_copy else 7
        start = base + (index + instance * 256) * 8
        record = bytes(data[start:start + 11])
        record += bytes([self.FILL]) * (11 - len(record))
        return array_value(int_value(byte) for byte in record[:3] + b" = " + record[3:])
