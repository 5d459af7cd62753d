-- Lets a request wait, at most ten seconds, while its slot moves to another shard.
local slots = Map.new(os.getenv("SLOTS"), Map._str)

core.register_action("wait_for_slot", { "http-req" }, function(transaction)
    local slot = transaction:get_var("txn.slot")
    for _ = 1, 500 do
        if slots:lookup(slot) ~= "moving" then
            return
        end
        core.msleep(20)
    end
end, 0)
